#include "recordingpanel.h"

#include "recordingnames.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>

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
    m_label->adjustSize();
    m_label->move(13, (height() - m_label->height()) / 2);

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
    m_stop->move(width() - 10 - m_stop->width(), (height() - m_stop->height()) / 2);
    connect(m_stop, &QPushButton::clicked, this, &RecordingPanel::stopRequested);
}

QPoint RecordingPanel::placement(const QRect &availableArea)
{
    return QPoint(availableArea.x() + availableArea.width() - panelSize.width() - screenInset,
                  availableArea.y() + screenInset);
}

void RecordingPanel::present(QScreen *screen)
{
    if (screen) {
        setScreen(screen);
        move(placement(screen->availableGeometry()));
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
