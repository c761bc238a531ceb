#include "playercontrolbar.h"

#include "controlbarfit.h"
#include "controlbutton.h"
#include "keyboardreach.h"
#include "model/keyboardshortcuts.h"
#include "model/playermodel.h"
#include "recordcontrol.h"
#include "surface/fullscreentoggle.h"
#include "surface/icons.h"
#include "timetext.h"
#include "trackmenus.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMouseEvent>
#include <QProxyStyle>
#include <QSlider>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

// A press on the track moves the thumb there and starts a drag, as in every media player.
class TrackJumpStyle final : public QProxyStyle
{
public:
    using QProxyStyle::QProxyStyle;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returnData) const override
    {
        if (hint == QStyle::SH_Slider_AbsoluteSetButtons)
            return Qt::LeftButton;
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

const QString sliderStyle = QStringLiteral(
    "QSlider::groove:horizontal { height: 4px; border-radius: 2px; background: rgba(0,0,0,38); }"
    "QSlider::sub-page:horizontal { border-radius: 2px; background: rgba(0,0,0,200); }"
    "QSlider::handle:horizontal { width: 11px; height: 11px; margin: -4px 0; border-radius: 6px;"
    " background: white; border: 1px solid rgba(0,0,0,90); }"
    "QSlider::handle:horizontal:pressed { background: #e8e8e8; }"
    "QSlider:focus { border: 1px solid palette(highlight); border-radius: 3px; }");

QSlider *makeSlider(const QString &name, QWidget *parent)
{
    auto *slider = new QSlider(Qt::Horizontal, parent);
    auto *style = new TrackJumpStyle(QApplication::style()->name());
    style->setParent(slider);
    slider->setStyle(style);
    slider->setStyleSheet(sliderStyle);
    KeyboardReach::reachable(slider, name);
    slider->setFixedHeight(16);
    return slider;
}

QLabel *makeTimeLabel(int width, QWidget *parent)
{
    auto *label = new QLabel(parent);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(11);
    label->setFont(font);
    label->setFixedWidth(width);
    label->setAlignment(Qt::AlignCenter);
    label->setStyleSheet(QStringLiteral("color: rgba(0,0,0,140);"));
    return label;
}

int sliderUnits(double value)
{
    const double units = value * PlayerControlBar::sliderScale;
    if (!std::isfinite(units))
        return 0;
    return int(std::clamp(units, 0.0, double(std::numeric_limits<int>::max())));
}

} // namespace

PlayerControlBar::PlayerControlBar(PlayerModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
{
    setFixedHeight(barHeight);
    setAutoFillBackground(true);
    auto *layout = new QHBoxLayout(this);
    m_layout = layout;
    layout->setContentsMargins(10, 0, 10, 0);
    layout->setSpacing(ControlBarFit::widestSpacing);

    ControlButton *back
        = addButton(QStringLiteral("backward.fill"), false, QStringLiteral("Skip back 10 seconds"));
    connect(back, &QAbstractButton::clicked, this, [this] { m_model.skip(-10); });
    m_playPause = addButton(QString(), true, QString());
    connect(m_playPause, &QAbstractButton::clicked, this, [this] { m_model.togglePlayback(); });
    ControlButton *stop = addButton(QStringLiteral("stop.fill"), false, QStringLiteral("Stop"));
    connect(stop, &QAbstractButton::clicked, this, [this] { m_model.stop(); });
    ControlButton *forward = addButton(QStringLiteral("forward.fill"), false,
                                       QStringLiteral("Skip forward 10 seconds"));
    connect(forward, &QAbstractButton::clicked, this, [this] { m_model.skip(10); });

    auto *divider = new QFrame(this);
    divider->setFrameShape(QFrame::VLine);
    divider->setFixedHeight(22);
    divider->setStyleSheet(QStringLiteral("color: rgba(0,0,0,50);"));
    layout->addWidget(divider);

    m_sidebar
        = addButton(QStringLiteral("list.bullet"), false, QStringLiteral("Show or hide sidebar"));
    connect(m_sidebar, &QAbstractButton::clicked, this, &PlayerControlBar::sidebarToggleRequested);

    m_elapsed = makeTimeLabel(44, this);
    layout->addWidget(m_elapsed);
    m_position = makeSlider(QStringLiteral("Position"), this);
    // From the keyboard, a focused slider steps 5 s and seeks at once.
    m_position->setSingleStep(5 * sliderScale);
    m_position->setPageStep(60 * sliderScale);
    layout->addWidget(m_position, 1);
    m_remaining = makeTimeLabel(52, this);
    layout->addWidget(m_remaining);
    connect(m_position, &QSlider::sliderPressed, this, [this] {
        m_seeking = true;
        m_seekValue = double(m_position->value()) / sliderScale;
    });
    connect(m_position, &QSlider::sliderMoved, this,
            [this](int value) { m_seekValue = double(value) / sliderScale; });
    connect(m_position, &QSlider::sliderReleased, this, &PlayerControlBar::endSeek);
    connect(m_position, &QSlider::actionTriggered, this, [this](int action) {
        // A drag seeks when released; keys and the wheel seek at once.
        if (m_seeking || action == QAbstractSlider::SliderMove)
            return;
        m_model.seek(double(m_position->sliderPosition()) / sliderScale);
    });

    m_mute = addButton(QString(), false, QStringLiteral("Mute or unmute"));
    connect(m_mute, &QAbstractButton::clicked, this, [this] { m_model.toggleMute(); });
    m_mute->installEventFilter(this);
    m_volumePopup = new QFrame(this, Qt::Popup);
    m_volumePopup->setFrameShape(QFrame::StyledPanel);
    auto *popupLayout = new QHBoxLayout(m_volumePopup);
    popupLayout->setContentsMargins(8, 6, 8, 6);
    m_volume = makeSlider(QStringLiteral("Volume"), this);
    m_volume->setSingleStep(sliderUnits(KeyboardShortcuts::volumeStep));
    m_volume->setFixedWidth(78);
    m_volume->setRange(0, sliderScale);
    layout->addWidget(m_volume);
    connect(m_volume, &QSlider::valueChanged, this, [this](int value) {
        if (!m_updatingSliders)
            m_model.setVolume(double(value) / sliderScale);
    });

    m_record = new RecordControl(this);
    layout->addWidget(m_record);

    m_tracksButton = addButton(QStringLiteral("captions.bubble"), false,
                               QStringLiteral("Audio and subtitles"));
    m_tracksMenu = new QMenu(this);
    TrackMenus::follow(m_tracksMenu->addMenu(TrackMenus::audioTitle.toString()), m_model,
                       TrackKind::audio);
    TrackMenus::follow(m_tracksMenu->addMenu(TrackMenus::subtitlesTitle.toString()), m_model,
                       TrackKind::subtitle);
    connect(m_tracksButton, &QAbstractButton::clicked, this, [this] {
        m_tracksMenu->popup(m_tracksButton->mapToGlobal(QPoint(0, m_tracksButton->height())));
    });
    const auto updateTracksButton = [this] {
        m_tracksButton->setVisible(TrackMenus::worthAButton(m_model.tracks()));
        fitWidth();
    };
    connect(&m_model, &PlayerModel::tracksChanged, this, updateTracksButton);
    updateTracksButton();

    m_modeButton = addButton(QString(), false, QStringLiteral("Video display mode"));
    m_modeButton->setFixedWidth(31);
    m_modeMenu = new QMenu(this);
    connect(m_modeButton, &QAbstractButton::clicked, this, [this] {
        m_modeMenu->popup(m_modeButton->mapToGlobal(QPoint(0, m_modeButton->height())));
    });

    ControlButton *fullScreen = addButton(QStringLiteral("arrow.up.left.and.arrow.down.right"),
                                          false, QStringLiteral("Enter full screen"));
    connect(fullScreen, &QAbstractButton::clicked, this,
            &PlayerControlBar::toggleActiveWindowFullScreen);

    connect(&m_model, &PlayerModel::isPlayingChanged, this, &PlayerControlBar::updatePlaying);
    connect(&m_model, &PlayerModel::currentTimeChanged, this, &PlayerControlBar::updateTimes);
    connect(&m_model, &PlayerModel::durationChanged, this, &PlayerControlBar::updateTimes);
    connect(&m_model, &PlayerModel::isMutedChanged, this, &PlayerControlBar::updateMuted);
    connect(&m_model, &PlayerModel::volumeChanged, this, &PlayerControlBar::updateVolume);
    updatePlaying();
    updateTimes();
    updateMuted();
    updateVolume();
    updateModeMenu();
    for (QWidget *child : findChildren<QWidget *>())
        child->installEventFilter(this);
    orderTabs();
}

QList<QWidget *> PlayerControlBar::focusableControls() const
{
    QList<QWidget *> controls;
    for (int i = 0; i < m_layout->count(); ++i) {
        QWidget *widget = m_layout->itemAt(i)->widget();
        if (!widget)
            continue;
        if (widget->focusPolicy() & Qt::TabFocus) {
            controls.append(widget);
            continue;
        }
        // A control of several faces (the record control) offers each of them.
        for (QWidget *child : widget->findChildren<QWidget *>())
            if (child->focusPolicy() & Qt::TabFocus)
                controls.append(child);
    }
    return controls;
}

void PlayerControlBar::orderTabs()
{
    const QList<QWidget *> controls = focusableControls();
    for (qsizetype i = 1; i < controls.size(); ++i)
        QWidget::setTabOrder(controls.at(i - 1), controls.at(i));
}

void PlayerControlBar::mousePressEvent(QMouseEvent *event)
{
    Q_EMIT pressed();
    QWidget::mousePressEvent(event);
}

void PlayerControlBar::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    fitWidth();
}

void PlayerControlBar::fitWidth()
{
    int fixed = m_layout->contentsMargins().left() + m_layout->contentsMargins().right();
    int shown = 0;
    for (int i = 0; i < m_layout->count(); ++i) {
        QWidget *widget = m_layout->itemAt(i)->widget();
        if (!widget || widget->isHidden())
            continue;
        ++shown;
        if (widget != m_position && widget != m_volume)
            fixed += std::clamp(widget->sizeHint().width(), widget->minimumWidth(),
                                widget->maximumWidth());
    }
    if (m_volumeFolded)
        ++shown; // the volume slider, back in the row
    const ControlBarFit::Arrangement arrangement
        = ControlBarFit::arrange(width(), fixed, shown - 1, m_volume->width());
    m_layout->setSpacing(arrangement.spacing);
    if (arrangement.volumeFolded == m_volumeFolded)
        return;
    m_volumeFolded = arrangement.volumeFolded;
    if (m_volumeFolded) {
        m_layout->removeWidget(m_volume);
        m_volumePopup->layout()->addWidget(m_volume);
    } else {
        m_volumePopup->hide();
        m_volumePopup->layout()->removeWidget(m_volume);
        m_volume->setParent(this);
        m_layout->insertWidget(m_layout->indexOf(m_mute) + 1, m_volume);
    }
    m_volume->show();
    orderTabs();
}

void PlayerControlBar::showVolumePopup()
{
    if (!m_volumeFolded || m_volumePopup->isVisible())
        return;
    m_volumePopup->adjustSize();
    // Above the mute button: the bar sits at the bottom of the window.
    const QPoint corner = m_mute->mapToGlobal(
        QPoint((m_mute->width() - m_volumePopup->width()) / 2, -m_volumePopup->height() - 4));
    m_volumePopup->move(corner);
    m_volumePopup->show();
}

bool PlayerControlBar::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress && watched != m_volumePopup
        && !m_volumePopup->isAncestorOf(qobject_cast<QWidget *>(watched)))
        Q_EMIT pressed();
    if (watched != m_mute || !m_volumeFolded)
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        if (static_cast<QMouseEvent *>(event)->button() == Qt::RightButton) {
            showVolumePopup();
            return true;
        }
        break;
    case QEvent::Wheel: {
        // Whole notches change the volume as over the picture; the pop-up shows the level.
        m_wheelTurn += static_cast<QWheelEvent *>(event)->angleDelta().y();
        const int notches = m_wheelTurn / QWheelEvent::DefaultDeltasPerStep;
        m_wheelTurn -= notches * QWheelEvent::DefaultDeltasPerStep;
        if (notches != 0)
            m_model.changeVolume(notches * KeyboardShortcuts::volumeStep);
        showVolumePopup();
        return true;
    }
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

ControlButton *PlayerControlBar::addButton(const QString &symbol, bool prominent,
                                           const QString &help)
{
    auto *button = new ControlButton(
        prominent ? ControlButton::Look::prominent : ControlButton::Look::plain, this);
    button->setSymbol(symbol);
    button->setToolTip(help);
    layout()->addWidget(button);
    return button;
}

void PlayerControlBar::setSidebarShown(bool shown)
{
    m_sidebar->setSelected(shown);
}

void PlayerControlBar::setPortraitMode(PortraitDisplayMode mode)
{
    m_portraitMode = mode;
    updateModeMenu();
}

void PlayerControlBar::setRecorder(PlayerRecorder *recorder)
{
    m_record->setRecorder(recorder);
}

QString PlayerControlBar::displayModeSymbol(PortraitDisplayMode mode)
{
    switch (mode) {
    case PortraitDisplayMode::normal:
        return QStringLiteral("rectangle");
    case PortraitDisplayMode::fill:
        return QStringLiteral("rectangle.portrait.fill");
    case PortraitDisplayMode::rotate:
        return QStringLiteral("rotate.right");
    case PortraitDisplayMode::manual:
        return QStringLiteral("hand.draw");
    case PortraitDisplayMode::smart:
        return QStringLiteral("viewfinder");
    }
    return {};
}

void PlayerControlBar::updatePlaying()
{
    const bool playing = m_model.isPlaying();
    m_playPause->setSymbol(playing ? QStringLiteral("pause.fill") : QStringLiteral("play.fill"));
    m_playPause->setToolTip(playing ? QStringLiteral("Pause") : QStringLiteral("Play"));
}

void PlayerControlBar::updateTimes()
{
    const double current = m_model.currentTime();
    const double duration = m_model.duration();
    m_elapsed->setText(TimeText::time(current));
    m_remaining->setText(TimeText::remaining(duration, current));
    // The model's periodic updates must not pull the thumb from under a drag.
    m_updatingSliders = true;
    m_position->setRange(0, sliderUnits(std::max(duration, 1.0)));
    if (!m_seeking)
        m_position->setValue(sliderUnits(current));
    m_updatingSliders = false;
}

void PlayerControlBar::endSeek()
{
    m_seeking = false;
    m_seekValue = double(m_position->value()) / sliderScale;
    m_model.seek(m_seekValue);
}

void PlayerControlBar::updateMuted()
{
    const bool muted = m_model.isMuted();
    m_mute->setSymbol(muted ? QStringLiteral("speaker.slash.fill")
                            : QStringLiteral("speaker.wave.2.fill"));
}

void PlayerControlBar::updateVolume()
{
    m_updatingSliders = true;
    m_volume->setValue(sliderUnits(std::clamp(m_model.volume(), 0.0, 1.0)));
    m_updatingSliders = false;
}

void PlayerControlBar::updateModeMenu()
{
    m_modeButton->setSymbol(displayModeSymbol(m_portraitMode));
    m_modeMenu->clear();
    for (PortraitDisplayMode mode : PortraitDisplayModes::allCases) {
        const QString symbol = mode == m_portraitMode ? QStringLiteral("checkmark.circle.fill")
                                                      : displayModeSymbol(mode);
        QAction *action
            = m_modeMenu->addAction(Icons::icon(symbol), PortraitDisplayModes::title(mode));
        // The symbol's name, for assistive tools and tests.
        action->setProperty("symbol", symbol);
        connect(action, &QAction::triggered, this,
                [this, mode] { Q_EMIT displayModeChosen(mode); });
    }
}

void PlayerControlBar::toggleActiveWindowFullScreen()
{
    QWidget *window = QApplication::activeWindow();
    if (!window)
        return;
    toggleFullScreen(window);
}
