#include "recordcontrol.h"

#include "controlbutton.h"
#include "surface/busyindicator.h"
#include "surface/icons.h"

#include <QHBoxLayout>
#include <QMenu>

RecordControl::RecordControl(QWidget *parent)
    : QWidget(parent)
    , m_menuButton(new ControlButton(ControlButton::Look::record, this))
    , m_stopButton(new ControlButton(ControlButton::Look::record, this))
    , m_spinner(new BusyIndicator(this))
    , m_menu(new QMenu(this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_menuButton);
    layout->addWidget(m_stopButton);
    layout->addWidget(m_spinner);

    m_menuButton->setSymbol(QStringLiteral("record.circle.fill"));
    m_menuButton->setFixedWidth(29);
    m_menuButton->setToolTip(QStringLiteral("Choose recording quality"));
    QAction *normal = m_menu->addAction(Icons::icon(u"record.circle", Qt::red),
                                        QStringLiteral("Normal Recording"));
    QAction *hd = m_menu->addAction(Icons::icon(u"record.circle.fill", Qt::red),
                                    QStringLiteral("HD Recording (1080p)"));
    normal->setProperty("symbol", QStringLiteral("record.circle"));
    hd->setProperty("symbol", QStringLiteral("record.circle.fill"));
    connect(normal, &QAction::triggered, this, [this] { choose(PlayerRecordingQuality::normal); });
    connect(hd, &QAction::triggered, this, [this] { choose(PlayerRecordingQuality::hd); });
    connect(m_menuButton, &QAbstractButton::clicked, this, [this] {
        m_menu->popup(m_menuButton->mapToGlobal(QPoint(0, m_menuButton->height())));
    });

    m_stopButton->setSymbol(QStringLiteral("stop.fill"));
    m_stopButton->setRecordingLook(true);
    m_stopButton->setToolTip(QStringLiteral("Stop Recording"));
    connect(m_stopButton, &QAbstractButton::clicked, this, [this] {
        if (m_recorder)
            m_recorder->stopRecording();
    });

    m_spinner->setFixedSize(23, 19);
    refresh();
}

void RecordControl::setRecorder(PlayerRecorder *recorder)
{
    if (m_recorder)
        disconnect(m_recorder, nullptr, this, nullptr);
    m_recorder = recorder;
    if (m_recorder)
        connect(m_recorder, &PlayerRecorder::stateChanged, this, &RecordControl::refresh);
    refresh();
}

RecordControl::Face RecordControl::face() const
{
    if (m_recorder && m_recorder->isRecording())
        return Face::stop;
    if (m_recorder && m_recorder->state() == PlayerRecordingState::preparing)
        return Face::preparing;
    return Face::menu;
}

void RecordControl::refresh()
{
    const Face current = face();
    m_stopButton->setVisible(current == Face::stop);
    m_spinner->setVisible(current == Face::preparing);
    m_menuButton->setVisible(current == Face::menu);
    const PlayerRecordingState state
        = m_recorder ? m_recorder->state() : PlayerRecordingState::idle;
    setEnabled(m_recorder && state != PlayerRecordingState::preparing
               && state != PlayerRecordingState::stopping);
    if (!isEnabled())
        m_menu->close();
}

void RecordControl::choose(PlayerRecordingQuality quality)
{
    if (!m_recorder)
        return;
    if (m_recorder->isRecording())
        m_recorder->stopRecording();
    else if (m_recorder->state() == PlayerRecordingState::idle)
        m_recorder->startRecording(quality);
}
