#include "keyboardreach.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

namespace KeyboardReach {

namespace {

// One filter for every reachable control: Return presses, a new tooltip renames.
class ReachFilter final : public QObject
{
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *button = qobject_cast<QAbstractButton *>(watched);
        if (!button)
            return false;
        if (event->type() == QEvent::ToolTipChange) {
            button->setAccessibleName(button->toolTip());
        } else if (event->type() == QEvent::KeyPress) {
            const int key = static_cast<QKeyEvent *>(event)->key();
            if ((key == Qt::Key_Return || key == Qt::Key_Enter) && button->isEnabled()) {
                button->click();
                return true;
            }
        }
        return false;
    }
};

ReachFilter &filter()
{
    static ReachFilter shared;
    return shared;
}

} // namespace

void reachable(QAbstractButton *button)
{
    button->setFocusPolicy(Qt::TabFocus);
    if (!button->toolTip().isEmpty())
        button->setAccessibleName(button->toolTip());
    button->installEventFilter(&filter());
}

void reachable(QAbstractSlider *slider, const QString &name)
{
    slider->setFocusPolicy(Qt::TabFocus);
    slider->setAccessibleName(name);
}

void paintFocusRing(QPainter &painter, const QWidget *widget, QRectF face, qreal radius)
{
    if (!widget->hasFocus())
        return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath ring;
    ring.addRoundedRect(face.adjusted(0.75, 0.75, -0.75, -0.75), radius, radius);
    painter.strokePath(ring, QPen(widget->palette().color(QPalette::Highlight), 1.5));
    painter.restore();
}

} // namespace KeyboardReach
