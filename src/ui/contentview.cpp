#include "contentview.h"

#include "channellist.h"
#include "fullscreenpresenter.h"
#include "model/openpanels.h"
#include "model/playermodel.h"
#include "model/playernotifications.h"
#include "networkpanel.h"
#include "nownextoverlay.h"
#include "playercontrolbar.h"
#include "recording/playerrecordingcontroller.h"
#include "recordingalerts.h"
#include "surface/playersurface.h"
#include "toastoverlay.h"
#include "volumeindicator.h"
#include "webplayer/youtubeplayerview.h"
#include "windowaspecthint.h"
#include "windowfit.h"
#include "windowshape.h"
#include "windowtitlesetter.h"

#include <QDateTime>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QFrame>
#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QMimeData>
#include <QShortcut>
#include <QVBoxLayout>
#include <QVariantAnimation>

#include <algorithm>
#include <utility>

ContentView::ContentView(PlayerModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_sidebarAnimation(new QVariantAnimation(this))
    , m_titleSetter(new WindowTitleSetter(this))
{
    setAcceptDrops(true);
    setAutoFillBackground(true);

    m_sidebar = new QWidget(this);
    m_sidebar->setObjectName(QStringLiteral("sidebar"));
    m_sidebar->setAutoFillBackground(true);
    QPalette sidebarPalette = m_sidebar->palette();
    sidebarPalette.setColor(QPalette::Window, sidebarPalette.color(QPalette::Window).darker(104));
    m_sidebar->setPalette(sidebarPalette);
    auto *sidebarLayout = new QVBoxLayout(m_sidebar);
    sidebarLayout->setContentsMargins(0, 0, 0, 0);
    sidebarLayout->setSpacing(0);
    m_networkPanel = new NetworkPanel(model, m_sidebar);
    m_channelList = new ChannelList(model, m_sidebar);
    sidebarLayout->addWidget(m_networkPanel);
    sidebarLayout->addWidget(m_channelList, 1);
    sidebarLayout->addStretch(0);
    m_sidebar->hide();
    m_divider = new QFrame(this);
    m_divider->setFrameShape(QFrame::VLine);
    m_divider->setStyleSheet(QStringLiteral("color: rgba(0,0,0,40);"));
    m_divider->hide();

    m_surface = new PlayerSurface(model, this);
    m_surface->setWebPlayerViewFactory(
        [](QWidget *parent) -> WebPlayerView * { return new YouTubePlayerView(parent); });
    m_controlBar = new PlayerControlBar(model, this);
    m_toast = new ToastOverlay(this);
    m_nowNext = new NowNextOverlay(this);
    m_volumeIndicator = new VolumeIndicator(this);
    const auto showVolume = [this] {
        m_volumeIndicator->showLevel(m_model.volume(), m_model.isMuted());
    };
    connect(&m_model, &PlayerModel::volumeChanged, this, showVolume);
    connect(&m_model, &PlayerModel::isMutedChanged, this, showVolume);
    m_fullScreen = new FullScreenPresenter(model, this);
    m_recordingController = new PlayerRecordingController(this);
    m_recordingAlerts = new RecordingAlerts(*m_recordingController, this);
    connect(m_fullScreen, &FullScreenPresenter::controlsOpacityChanged, this,
            &ContentView::updateFloatingBar);
    // While the sidebar is hidden, the model's error shows over the bottom of the picture.
    m_error = new QLabel(this);
    m_error->setAlignment(Qt::AlignCenter);
    m_error->setWordWrap(true);
    m_error->setStyleSheet(
        QStringLiteral("color: #ff8a80; background: rgba(0,0,0,190); padding: 6px 12px;"));

    m_sidebarAnimation->setEasingCurve(QEasingCurve::InOutCubic);
    connect(m_sidebarAnimation, &QVariantAnimation::valueChanged, this,
            [this](const QVariant &value) {
                m_sidebarShown = value.toDouble();
                layoutChildren();
            });
    connect(m_sidebarAnimation, &QVariantAnimation::finished, this, [this] {
        m_sidebar->setVisible(m_showSidebar);
        m_divider->setVisible(m_showSidebar);
        // The picture kept its place's shape while the sidebar moved: that shape is kept from
        // now on, so that the hint matches the size the window has.
        if (!m_pictureShape.isEmpty() && !m_surface->size().isEmpty() && !m_isFullScreen) {
            m_pictureShape = m_surface->size();
            applyAspectHint();
        }
    });

    m_addressFocusTask.setSingleShot(true);
    // Precise: a coarse timer may fire up to 5 % early, before the sidebar is in.
    m_addressFocusTask.setTimerType(Qt::PreciseTimer);
    m_addressFocusTask.setInterval(addressFocusDelayMs);
    connect(&m_addressFocusTask, &QTimer::timeout, this, [this] {
        if (m_showSidebar)
            m_networkPanel->focusAddressField();
    });

    m_settleTask.setSingleShot(true);
    m_settleTask.setInterval(resizeSettleMs);
    connect(&m_settleTask, &QTimer::timeout, this, &ContentView::settleWindowShape);

    connect(m_networkPanel, &NetworkPanel::filtersResetRequested, m_channelList,
            &ChannelList::resetFilters);
    // What plays from anywhere but the address field, and a click on the bar, give the keys
    // back to the player: a letter must not land in the address.
    connect(&m_model, &PlayerModel::itemRequested, this, [this] {
        if (!m_networkPanel->isOpening())
            releaseAddressField();
    });
    connect(m_controlBar, &PlayerControlBar::pressed, this, &ContentView::releaseAddressField);
    auto *addressShortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_L), this);
    connect(addressShortcut, &QShortcut::activated, this, &ContentView::focusAddressField);
    connect(m_controlBar, &PlayerControlBar::sidebarToggleRequested, this,
            [this] { setShowSidebar(!m_showSidebar); });
    connect(m_controlBar, &PlayerControlBar::displayModeChosen, this,
            &ContentView::setPortraitMode);
    connect(&PlayerNotifications::shared(), &PlayerNotifications::playerSurfaceClicked, this,
            [this] { setShowSidebar(false, sidebarCloseOnClickMs); });
    connect(&m_model, &PlayerModel::toastMessageChanged, this,
            [this] { m_toast->setMessage(m_model.toastMessage(), m_model.toastDetail()); });
    connect(&m_model, &PlayerModel::videoAspectRatioChanged, this,
            [this] { applyWindowAspect(m_model.videoAspectRatio(), m_portraitMode); });
    connect(&m_model, &PlayerModel::titleChanged, this, &ContentView::updateWindowTitle);
    connect(&m_model, &PlayerModel::playlistChanged, this, &ContentView::updateChannelSection);
    connect(&m_model, &PlayerModel::channelStepRequested, m_channelList, &ChannelList::stepChannel);
    connect(&m_model, &PlayerModel::errorMessageChanged, this, &ContentView::updateError);
    // The playing channel's programmes: shown when it starts (or its guide comes), kept current
    // at programme boundaries, and shown again when the pointer moves over the picture.
    connect(&m_model, &PlayerModel::playingChannelChanged, this, [this] { updateNowNext(true); });
    connect(&m_model, &PlayerModel::programmeGuideChanged, this, [this] { updateNowNext(true); });
    connect(&m_model, &PlayerModel::programmesChanged, this, [this] { updateNowNext(false); });
    connect(&PlayerNotifications::shared(), &PlayerNotifications::playerMouseMoved, this, [this] {
        if (FullScreenPresenter::isMouseOverPlayer(window()))
            m_nowNext->reveal();
    });
    orderTabs();
    updateChannelSection();
    updateError();
    m_toast->setMessage(m_model.toastMessage(), m_model.toastDetail());
    setRecorder(m_recordingController);
}

void ContentView::setShowSidebar(bool show, int durationMs)
{
    if (m_showSidebar == show)
        return;
    m_showSidebar = show;
    m_networkPanel->setShowMovieName(false);
    if (show) {
        m_addressFocusTask.start();
    } else {
        m_addressFocusTask.stop();
        if (m_sidebar->isAncestorOf(focusWidget()))
            setFocus(Qt::OtherFocusReason);
    }
    m_controlBar->setSidebarShown(show);
    updateError();
    m_sidebar->show();
    m_divider->show();
    m_sidebarAnimation->stop();
    m_sidebarAnimation->setDuration(durationMs);
    m_sidebarAnimation->setStartValue(m_sidebarShown);
    m_sidebarAnimation->setEndValue(show ? 1.0 : 0.0);
    m_sidebarAnimation->start();
    updateWindowTitle();
    Q_EMIT sidebarShownChanged(show);
}

void ContentView::setPortraitMode(PortraitDisplayMode mode)
{
    if (m_portraitMode == mode)
        return;
    m_portraitMode = mode;
    m_surface->setPortraitMode(mode);
    m_controlBar->setPortraitMode(mode);
    applyWindowAspect(m_model.videoAspectRatio(), mode);
    Q_EMIT portraitModeChanged(mode);
}

void ContentView::setFullScreen(bool fullScreen)
{
    if (m_isFullScreen == fullScreen)
        return;
    m_isFullScreen = fullScreen;
    if (fullScreen)
        m_fullScreen->willEnterFullScreen();
    else
        m_fullScreen->didExitFullScreen();
    m_surface->setFullScreen(fullScreen);
    updateFloatingBar();
    // The recording panel stays above the player, full screen included.
    if (RecordingPanel *panel = m_recordingController->recordingPanel())
        panel->raise();
    Q_EMIT fullScreenChanged(fullScreen);
}

void ContentView::windowRestored()
{
    // Changes of shape made while the window filled the screen were put off until now, and
    // the size restored may no longer fit the screen.
    m_restoring = true;
    m_settleTask.start();
}

void ContentView::settleWindowShape()
{
    QWidget *window = this->window();
    if (m_isFullScreen || window->isMaximized() || window->isFullScreen())
        return;
    const bool restoring = std::exchange(m_restoring, false);
    // With the hint the window manager keeps the shape through resizes by hand.
    if (!restoring && WindowAspectHint::isAvailable())
        return;
    if (m_model.videoAspectRatio() > 0) {
        applyWindowAspect(m_model.videoAspectRatio(), m_portraitMode);
        return;
    }
    if (restoring)
        WindowFit::resizeContent(window, this, size());
}

PlayerRecorder *ContentView::recorder() const
{
    return m_recorder;
}

void ContentView::setRecorder(PlayerRecorder *recorder)
{
    m_recorder = recorder;
    m_controlBar->setRecorder(recorder);
    m_fullScreen->setRecorder(recorder);
    Q_EMIT recorderChanged();
}

void ContentView::updateFloatingBar()
{
    if (!m_isFullScreen) {
        if (m_barOpacity) {
            m_controlBar->setGraphicsEffect(nullptr); // deletes the effect
            m_barOpacity = nullptr;
        }
        m_controlBar->show();
    } else {
        if (!m_barOpacity) {
            m_barOpacity = new QGraphicsOpacityEffect(m_controlBar);
            m_controlBar->setGraphicsEffect(m_barOpacity);
        }
        const double opacity = m_fullScreen->controlsOpacity();
        m_barOpacity->setOpacity(opacity);
        // A faded bar takes no clicks.
        m_controlBar->setVisible(opacity > 0);
        m_controlBar->raise();
    }
    layoutChildren();
}

void ContentView::openURL(const QUrl &url)
{
    m_model.play(url, url.fileName(), false);
}

void ContentView::openAddress(const QString &text)
{
    setShowSidebar(true);
    m_networkPanel->setAddress(text);
    m_networkPanel->openStream();
    // Typed by no one here: the keys stay the player's.
    releaseAddressField();
}

void ContentView::applyWindowTitleNow()
{
    m_titleSetter->applyNow(m_model.title(), m_showSidebar);
}

void ContentView::updateWindowTitle()
{
    m_titleSetter->update(m_model.title(), m_showSidebar);
}

void ContentView::updateChannelSection()
{
    m_channelList->setVisible(!m_model.playlist().isEmpty());
}

void ContentView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // The player holds the keyboard at first, not the first control Tab would reach.
    if (!window()->focusWidget())
        setFocus(Qt::OtherFocusReason);
    m_model.installKeyboardShortcuts();
}

void ContentView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutChildren();
    // The title is fitted to the window's width.
    updateWindowTitle();
    if (!m_pictureShape.isEmpty())
        applyAspectHint();
    if (m_restoring || (!m_pictureShape.isEmpty() && !WindowAspectHint::isAvailable()))
        m_settleTask.start();
}

int ContentView::sidebarColumn() const
{
    return m_showSidebar ? sidebarWidth + 1 : 0;
}

void ContentView::layoutChildren()
{
    const int shown = qRound(sidebarWidth * m_sidebarShown);
    // The sidebar slides in from the left edge at its full width.
    m_sidebar->setGeometry(shown - sidebarWidth, 0, sidebarWidth, height());
    m_divider->setGeometry(shown, 0, 1, height());
    const int column = shown > 0 ? shown + 1 : 0;
    const int barHeight = PlayerControlBar::barHeight;
    if (m_isFullScreen) {
        // The bar floats over the bottom of the picture.
        const int inset = FullScreenPresenter::floatingBarInset;
        m_surface->setGeometry(column, 0, width() - column, height());
        m_controlBar->setGeometry(column + inset, height() - inset - barHeight,
                                  width() - column - 2 * inset, barHeight);
    } else {
        m_surface->setGeometry(column, 0, width() - column, height() - barHeight);
        m_controlBar->setGeometry(column, height() - barHeight, width() - column, barHeight);
    }
    // Above the bar in a window; above the floating bar in full screen.
    const int pictureBottom = m_isFullScreen
        ? height() - FullScreenPresenter::floatingBarInset - barHeight
        : height() - barHeight;
    m_toast->place(QRect(column, 0, width() - column, pictureBottom));
    m_toast->raise();
    m_volumeIndicator->place(QRect(column, 0, width() - column, pictureBottom));
    m_volumeIndicator->raise();
    m_nowNext->place(QRect(column, 0, width() - column, pictureBottom));
    if (m_error->isVisible()) {
        const int errorWidth = width() - column;
        m_error->setGeometry(column, height() - barHeight - m_error->heightForWidth(errorWidth),
                             errorWidth, m_error->heightForWidth(errorWidth));
    }
}

void ContentView::updateNowNext(bool reveal)
{
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    m_nowNext->setProgrammes(m_model.playingProgrammes(now), now);
    if (reveal)
        m_nowNext->reveal();
}

void ContentView::updateError()
{
    m_error->setText(m_model.errorMessage());
    m_error->setVisible(!m_model.errorMessage().isNull() && !m_showSidebar);
    layoutChildren();
}

void ContentView::applyWindowAspect(double ratio, PortraitDisplayMode mode)
{
    // After the current layout pass, like every reshape of the window.
    QTimer::singleShot(0, this, [this, ratio, mode] {
        if (m_isFullScreen)
            return;
        QWidget *window = this->window();
        if (window->isMaximized() || window->isFullScreen())
            return;
        const WindowShape::Change change = WindowShape::change(ratio, mode, width());
        if (std::holds_alternative<WindowShape::ClearConstraint>(change)) {
            m_aspectConstraint = QSize();
            m_pictureShape = QSize();
            applyAspectHint();
            return;
        }
        const auto *size = std::get_if<QSizeF>(&change);
        if (!size)
            return;
        // On the window's screen, frame and menu bar included.
        QSizeF content = *size;
        const QRect available = WindowFit::availableArea(window);
        if (!available.isEmpty()) {
            const QSize largest
                = WindowFit::largestContent(available.size(), WindowFit::chrome(window, this));
            content = WindowShape::fitInto(content, QSizeF(largest));
        }
        const QSize asked = content.toSize();
        m_titleSetter->setFittedContent(content != *size ? asked : QSize());
        const QSize given = WindowFit::resizeContent(window, this, asked);
        m_aspectConstraint = window->frameGeometry().size();
        // The hint's shape is that of the picture at the size asked for, so that the window
        // manager keeps that size rather than settling on another.
        const QSize picture = given - QSize(sidebarColumn(), PlayerControlBar::barHeight);
        m_pictureShape = picture.isEmpty() ? QSize() : picture;
        applyAspectHint();
    });
}

void ContentView::applyAspectHint()
{
    // After Qt has written its own size hints for the latest resize, which drop the aspect.
    QTimer::singleShot(0, this, [this] {
        QWidget *window = this->window();
        if (m_isFullScreen || window->isFullScreen())
            return;
        // While the sidebar moves the picture's place changes: the hint comes when it is in.
        if (m_sidebarAnimation->state() == QAbstractAnimation::Running)
            return;
        // The aspect is the picture's: the menu bar, the sidebar and the control bar are the
        // hint's base size.
        const QSize base
            = window->size() - size() + QSize(sidebarColumn(), PlayerControlBar::barHeight);
        WindowAspectHint::apply(window, m_pictureShape, base);
    });
}

void ContentView::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void ContentView::dropEvent(QDropEvent *event)
{
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty())
        return;
    event->acceptProposedAction();
    // Only the first item counts, and only as a file. A subtitle file dropped on a playing
    // video joins it instead of replacing it.
    const QUrl &first = urls.constFirst();
    if (!first.isLocalFile())
        return;
    const QString suffix = QFileInfo(first.toLocalFile()).suffix().toLower();
    if (m_model.hasVideoItem() && OpenPanels::subtitleExtensions().contains(suffix))
        m_model.addSubtitleFile(first.toLocalFile());
    else
        openURL(first);
}
