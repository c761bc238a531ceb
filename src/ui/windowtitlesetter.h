#pragma once
// Keeps the window around a view in step with it: the title (cut in the middle when long), the
// minimum size, room for the sidebar, and the first window's size and place on screen. Each
// update runs on the next turn of the event loop, once the view sits in its window.
#include <QFontMetrics>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

class WindowTitleSetter final : public QObject
{
    Q_OBJECT

public:
    // The title keeps this much free on its two sides together.
    static constexpr int titleMargin = 180;

    explicit WindowTitleSetter(QWidget *view);

    void update(const QString &title, bool sidebarVisible);
    // Runs the update at once; for the window's construction, before it is first shown.
    void applyNow(const QString &title, bool sidebarVisible);

    // The content size the window was fitted to its screen at, below the minimum sizes, or an
    // invalid size when it was not: the minimum gives way to it.
    void setFittedContent(QSize size);

    // The title as shown in a bar barWidth wide: whole when it fits, else cut in the middle
    // with an ellipsis so that both its ends stay readable.
    static QString fittedTitle(const QString &title, const QFontMetrics &metrics, int barWidth);
    // The font of the centred title: the system font, semibold.
    static QFont titleFont();

private:
    QPointer<QWidget> m_view;
    QString m_title;
    bool m_sidebarVisible = false;
    bool m_scheduled = false;
    QSize m_fittedContent;
};
