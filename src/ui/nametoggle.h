#pragma once
// The small chevron button that shows or hides the optional stream name field; its tint
// deepens under the pointer and the chevron turns down while the field is shown.
#include <QAbstractButton>

class NameToggle final : public QAbstractButton
{
    Q_OBJECT

public:
    explicit NameToggle(QWidget *parent = nullptr);

    bool isHovered() const { return m_hovered; }
    void setExpanded(bool expanded);

    QSize sizeHint() const override { return {27, 21}; }

Q_SIGNALS:
    void hoveredChanged(bool hovered);

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;

private:
    void setHovered(bool hovered);

    bool m_hovered = false;
    bool m_expanded = false;
};
