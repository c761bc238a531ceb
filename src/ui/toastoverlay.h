#pragma once
// The short notice at the top of the window: white text on a dark rounded plate that slides in
// from the top edge with a fade and leaves the same way. A detail (why something failed) may
// stand under the text in a smaller, dimmer line.
#include <QStringList>
#include <QWidget>

class QVariantAnimation;

class ToastOverlay final : public QWidget
{
    Q_OBJECT

public:
    static constexpr int inset = 14;
    static constexpr int minimumHeight = 30;
    static constexpr int animationMs = 220;
    static constexpr int maxTextLines = 3;
    static constexpr int maxDetailLines = 2;

    explicit ToastOverlay(QWidget *parent = nullptr);

    // A null message hides the notice.
    void setMessage(const QString &message, const QString &detail = {});
    QString message() const { return m_message; }
    QString detail() const { return m_detail; }
    // Whether a notice is shown or on its way in.
    bool isShowing() const { return !m_message.isNull(); }

    // Places the notice at the top of area (the player's, in the parent's coordinates),
    // wrapped to its width.
    void place(const QRect &area);

    // The lines the notice shows: its whole text on one line when it fits the area, else
    // wrapped onto at most three (its reason onto two), a text too long for those cut with an
    // ellipsis.
    QStringList shownLines() const { return m_lines; }
    QStringList shownDetailLines() const { return m_detailLines; }
    QFont detailFont() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void animateTo(double end);

    QString m_message;
    QString m_detail;
    QString m_shownText; // kept while the notice leaves
    QString m_shownDetail;
    double m_progress = 0; // 0 hidden above the edge, 1 fully in
    QVariantAnimation *m_animation = nullptr;
    QRect m_area;
    QStringList m_lines;
    QStringList m_detailLines;
    int m_laidOutWidth = -1; // the width m_lines were laid out for
};
