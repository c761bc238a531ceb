#include "recordingpanel.h"

#include "recordingnames.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <algorithm>

RecordingPanel::RecordingPanel(QWidget *parent)
    : QWidget(parent,
              Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint
                  | Qt::WindowDoesNotAcceptFocus)
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedSize(panelSize);
    setWindowTitle(QStringLiteral("Recording"));

    m_label = new QLabel(RecordingNames::panelText(0), this);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSize(12);
    font.setWeight(QFont::DemiBold);
    m_label->setFont(font);
    m_label->setStyleSheet(QStringLiteral("color: white;"));
    m_label->setTextInteractionFlags(Qt::NoTextInteraction);
    // Room for the timer at its widest, so that it never runs under the button as it grows.
    m_label->adjustSize();
    m_label->resize(m_label->fontMetrics().horizontalAdvance(
                        RecordingNames::panelText(99 * 3600 + 59 * 60 + 59))
                        + 2,
                    m_label->height());

    m_stop = new QPushButton(QStringLiteral("Stop Recording"), this);
    m_stop->setFocusPolicy(Qt::NoFocus);
    QFont small = m_stop->font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    m_stop->setFont(small);
    m_stop->setStyleSheet(QStringLiteral(
        "QPushButton { color: #ff3b30; background: rgba(255,255,255,0.16); border: none;"
        " border-radius: 6px; padding: 3px 9px; }"
        "QPushButton:pressed { background: rgba(255,255,255,0.28); }"));
    m_stop->adjustSize();
    // The specified size, wider only where the desktop's fonts need more room.
    constexpr int inset = 13;
    constexpr int gap = 10;
    constexpr int trailing = 10;
    setFixedSize(
        std::max(panelSize.width(), inset + m_label->width() + gap + m_stop->width() + trailing),
        panelSize.height());
    m_label->move(inset, (height() - m_label->height()) / 2);
    m_stop->move(width() - trailing - m_stop->width(), (height() - m_stop->height()) / 2);
    connect(m_stop, &QPushButton::clicked, this, &RecordingPanel::stopRequested);
}

QPoint RecordingPanel::placement(const QRect &availableArea, int width)
{
    return QPoint(availableArea.x() + availableArea.width() - width - screenInset,
                  availableArea.y() + screenInset);
}

void RecordingPanel::present(QScreen *screen)
{
    if (screen) {
        setScreen(screen);
        move(placement(screen->availableGeometry(), width()));
    }
    show();
    raise();
}

void RecordingPanel::paintEvent(QPaintEvent *)
{
    // A dark heads-up background, as the panel floats over the video.
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(28, 28, 30, 225));
    painter.drawRoundedRect(rect(), 10, 10);
}

void RecordingPanel::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_dragOffset = event->globalPosition().toPoint() - pos();
}

void RecordingPanel::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        move(event->globalPosition().toPoint() - m_dragOffset);
}
