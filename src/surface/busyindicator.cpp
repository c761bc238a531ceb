#include "busyindicator.h"

#include <QPainter>
#include <QVariantAnimation>

namespace {
constexpr int spokes = 12;
}

BusyIndicator::BusyIndicator(QWidget *parent)
    : QWidget(parent)
    , m_spin(new QVariantAnimation(this))
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    m_spin->setStartValue(0);
    m_spin->setEndValue(spokes);
    m_spin->setDuration(1000);
    m_spin->setLoopCount(-1);
    connect(m_spin, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        const int step = value.toInt() % spokes;
        if (step != m_step) {
            m_step = step;
            update();
        }
    });
}

void BusyIndicator::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_spin->start();
}

void BusyIndicator::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    m_spin->stop();
}

void BusyIndicator::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double side = std::min(width(), height());
    painter.translate(width() / 2.0, height() / 2.0);
    QColor colour = palette().color(QPalette::WindowText);
    QPen pen(colour, side / 12, Qt::SolidLine, Qt::RoundCap);
    for (int i = 0; i < spokes; ++i) {
        // The leading spoke is brightest; those behind it fade.
        const int age = (m_step - i + spokes) % spokes;
        colour.setAlphaF(1.0 - 0.75 * age / spokes);
        pen.setColor(colour);
        painter.setPen(pen);
        painter.save();
        painter.rotate(360.0 * i / spokes);
        painter.drawLine(QPointF(0, -side * 0.25), QPointF(0, -side * 0.45));
        painter.restore();
    }
}
