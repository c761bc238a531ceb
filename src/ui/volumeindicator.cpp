#include "volumeindicator.h"

#include <algorithm>
#include <cmath>

VolumeIndicator::VolumeIndicator(QWidget *parent)
    : QLabel(parent)
{
    setObjectName(QStringLiteral("volumeIndicator"));
    setAlignment(Qt::AlignCenter);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setStyleSheet(QStringLiteral("color: white; background: rgba(0,0,0,200); border-radius: 6px;"
                                 " padding: 4px 10px;"));
    hide();
    m_hideTask.setSingleShot(true);
    m_hideTask.setInterval(shownMs);
    connect(&m_hideTask, &QTimer::timeout, this, &QWidget::hide);
}

QString VolumeIndicator::levelText(double volume, bool muted)
{
    if (muted)
        return QStringLiteral("Muted");
    const double percent = std::isfinite(volume) ? std::clamp(volume, 0.0, 1.0) * 100 : 0;
    return QStringLiteral("Volume %1 %").arg(std::lround(percent));
}

void VolumeIndicator::showLevel(double volume, bool muted)
{
    setText(levelText(volume, muted));
    place(m_area);
    show();
    raise();
    m_hideTask.start();
}

void VolumeIndicator::place(const QRect &area)
{
    m_area = area;
    const QSize size = sizeHint();
    setGeometry(area.right() + 1 - inset - size.width(), area.top() + inset, size.width(),
                size.height());
}
