#pragma once
// Lets the keyboard reach a control: Tab stops on it (a click does not take the focus from
// where the user left it), Return and Enter press it (a menu button opens its menu), assistive
// tools name it by its tooltip, and it shows a focus ring while it has the focus.
#include <QRectF>

class QAbstractButton;
class QAbstractSlider;
class QPainter;
class QWidget;

namespace KeyboardReach {

void reachable(QAbstractButton *button);
// A slider: ←/→ move it while it has the focus; name is what assistive tools call it.
void reachable(QAbstractSlider *slider, const QString &name);
// The ring a custom-painted control draws around face while it has the keyboard focus.
void paintFocusRing(QPainter &painter, const QWidget *widget, QRectF face, qreal radius);

} // namespace KeyboardReach
