#include "playersurface.h"

#include "busyindicator.h"
#include "icons.h"
#include "model/keyboardshortcuts.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "playerhostingview.h"
#include "playersurfaceregistry.h"
#include "webplayerview.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace {
QLabel *addLine(QVBoxLayout *layout, const QString &text, const QFont &font, double opacity)
{
    auto *label = new QLabel(text);
    label->setAlignment(Qt::AlignCenter);
    label->setFont(font);
    label->setStyleSheet(
        QStringLiteral("color: rgba(255, 255, 255, %1);").arg(qRound(opacity * 255)));
    label->setAttribute(Qt::WA_TransparentForMouseEvents);
    layout->addWidget(label);
    return label;
}
} // namespace

PlayerSurface::PlayerSurface(PlayerModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
{
    setAutoFillBackground(true);
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    black.setColor(QPalette::WindowText, Qt::white);
    setPalette(black);

    m_hostingView = new PlayerHostingView(this);
    m_hostingView->setObjectName(QStringLiteral("playerHostingView"));
    m_emptyState = makeEmptyState();

    m_buffering = new QWidget(this);
    m_buffering->setObjectName(QStringLiteral("buffering"));
    m_buffering->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto *bufferingLayout = new QVBoxLayout(m_buffering);
    bufferingLayout->addStretch();
    auto *spinner = new BusyIndicator(m_buffering);
    spinner->setFixedSize(40, 40);
    bufferingLayout->addWidget(spinner, 0, Qt::AlignHCenter);
    QFont caption = font();
    caption.setPointSizeF(caption.pointSizeF() * 0.85);
    caption.setWeight(QFont::Medium);
    addLine(bufferingLayout, QStringLiteral("Buffering…"), caption, 0.85);
    bufferingLayout->addStretch();

    // A file without pictures shows what it is, never the last frame of what played before.
    m_soundOnly = new QWidget(this);
    m_soundOnly->setObjectName(QStringLiteral("soundOnly"));
    m_soundOnly->setAutoFillBackground(true);
    m_soundOnly->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto *soundLayout = new QVBoxLayout(m_soundOnly);
    soundLayout->addStretch();
    QFont titleFont = font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.6);
    titleFont.setWeight(QFont::DemiBold);
    m_soundTitle = addLine(soundLayout, QString(), titleFont, 0.95);
    m_soundTitle->setWordWrap(true);
    m_soundDetails = addLine(soundLayout, QString(), font(), 0.7);
    m_soundDetails->setWordWrap(true);
    soundLayout->addStretch();
    m_soundOnly->hide();

    connect(&m_model.player(), &MediaPlayer::hasItemChanged, this,
            &PlayerSurface::updateEmptyState);
    // Queued: the view becomes ready while it is being shown, too early to hide it.
    connect(m_hostingView, &PlayerHostingView::ready, this, &PlayerSurface::updateEmptyState,
            Qt::QueuedConnection);
    connect(&m_model.player(), &MediaPlayer::soundOnlyChanged, this,
            &PlayerSurface::updateSoundOnly);
    connect(&m_model, &PlayerModel::titleChanged, this, &PlayerSurface::updateSoundOnly);
    connect(&m_model, &PlayerModel::youtubeContentChanged, this, &PlayerSurface::updateContent);
    connect(&m_model, &PlayerModel::isBufferingChanged, this, &PlayerSurface::updateBuffering);
    connect(&m_model, &PlayerModel::isBufferingChanged, this, &PlayerSurface::updateEmptyState);
    connect(&m_model, &PlayerModel::isLiveStreamChanged, this, &PlayerSurface::updateBuffering);
    updateContent();
    updateBuffering();
    updateSoundOnly();
}

QPushButton *PlayerSurface::makeEmptyState()
{
    auto *button = new QPushButton(this);
    button->setObjectName(QStringLiteral("emptyState"));
    button->setFlat(true);
    button->setCursor(Qt::PointingHandCursor);
    button->setToolTip(QStringLiteral("Open Media"));
    button->setStyleSheet(QStringLiteral(
        "QPushButton { background: transparent; border: none; }"
        "QPushButton:focus { border: 1.5px solid palette(highlight); border-radius: 8px; }"));
    auto *layout = new QVBoxLayout(button);
    layout->setContentsMargins(28, 28, 28, 28);
    layout->addStretch();
    QFont symbol = Icons::font(52);
    symbol.setWeight(QFont::ExtraLight);
    addLine(layout, Icons::glyph(u"play.rectangle"), symbol, 0.38);
    QFont headline = font();
    headline.setWeight(QFont::DemiBold);
    addLine(layout, QStringLiteral("Click to open media"), headline, 0.72);
    QFont caption = font();
    caption.setPointSizeF(caption.pointSizeF() * 0.85);
    addLine(layout, QStringLiteral("or drop a video or audio file here"), caption, 0.45);
    layout->addStretch();
    connect(button, &QPushButton::clicked, &m_model, &PlayerModel::openFile);
    return button;
}

void PlayerSurface::setFullScreen(bool fullScreen)
{
    m_fullScreen = fullScreen;
    updateContent();
}

void PlayerSurface::setPortraitMode(PortraitDisplayMode mode)
{
    m_portraitMode = mode;
    updateContent();
}

void PlayerSurface::setWebPlayerViewFactory(WebPlayerViewFactory factory)
{
    m_webPlayerViewFactory = std::move(factory);
    updateContent();
}

bool PlayerSurface::showsWebPlayer() const
{
    return m_model.youtubeContent().has_value();
}

bool PlayerSurface::showsEmptyState() const
{
    return !m_emptyState->isHidden();
}

bool PlayerSurface::showsBuffering() const
{
    return !m_buffering->isHidden();
}

void PlayerSurface::updateContent()
{
    if (showsWebPlayer()) {
        // The video view is taken down: it stops being the surface a recording captures,
        // unless something newer was registered meanwhile.
        m_hostingView->hide();
        PlayerSurfaceRegistry::shared().clearIfHolding(m_hostingView);
        if (!m_webPlayerView && m_webPlayerViewFactory) {
            m_webPlayerView = m_webPlayerViewFactory(this);
            if (m_webPlayerView) {
                connect(m_webPlayerView, &WebPlayerView::playerUnavailable, &m_model,
                        &PlayerModel::showWebPlayerUnavailable);
                m_webPlayerView->setGeometry(rect());
                m_webPlayerView->stackUnder(m_emptyState);
            }
        }
        if (m_webPlayerView) {
            m_webPlayerView->updateContent(*m_model.youtubeContent());
            m_webPlayerView->show();
        }
    } else {
        if (m_webPlayerView) {
            // The web view registers and unregisters itself; deleting it takes it down.
            delete m_webPlayerView;
            m_webPlayerView = nullptr;
        }
        // Made or updated: the video view is the surface to record from now on.
        PlayerSurfaceRegistry::shared().setSurface(m_hostingView);
        m_hostingView->setPlayer(qobject_cast<MpvPlayer *>(&m_model.player()));
        m_hostingView->setDisplayMode(m_portraitMode);
        m_hostingView->setFillScreen(m_fullScreen);
        m_hostingView->show();
    }
    updateEmptyState();
    updateSoundOnly();
}

bool PlayerSurface::showsSoundOnly() const
{
    return !m_soundOnly->isHidden();
}

QString PlayerSurface::soundOnlyText() const
{
    return m_soundTitle->text() + u'\n' + m_soundDetails->text();
}

void PlayerSurface::updateSoundOnly()
{
    const std::optional<SoundDescription> sound
        = m_model.youtubeContent() ? std::nullopt : m_model.player().soundOnly();
    if (sound) {
        m_soundTitle->setText(sound->title.isEmpty() ? m_model.title() : sound->title);
        QStringList details;
        for (const QString &detail : {sound->artist, sound->album})
            if (!detail.isEmpty())
                details.append(detail);
        m_soundDetails->setText(details.join(QStringLiteral(" — ")));
        m_soundDetails->setVisible(!details.isEmpty());
    }
    m_soundOnly->setGeometry(rect());
    m_soundOnly->setVisible(sound.has_value());
    stackOverlays();
}

void PlayerSurface::updateEmptyState()
{
    // A live item being brought back has no item between its tries, but something is under
    // way: "Buffering…" shows, not the invitation.
    const bool reconnecting = m_model.isLiveStream() && m_model.isBuffering();
    const bool invitation
        = !m_model.player().hasItem() && !m_model.youtubeContent() && !reconnecting;
    m_emptyState->setVisible(invitation);
    // Under the invitation the video view shows nothing, yet an OpenGL view is composed into
    // every redraw of the window (a third of each in software GL): it is left out until
    // something plays, once its GL is ready so that the first picture does not wait for it.
    if (!showsWebPlayer())
        m_hostingView->setVisible(!invitation || !m_hostingView->isReady());
    stackOverlays();
}

void PlayerSurface::updateBuffering()
{
    m_buffering->setVisible(m_model.isLiveStream() && m_model.isBuffering());
    stackOverlays();
}

void PlayerSurface::stackOverlays()
{
    // Raising a widget that is already on top still has all of it drawn again, and these cover
    // the whole picture: a new title or playlist would redraw the window's largest area.
    QList<QWidget *> widgets;
    for (QObject *child : children())
        if (auto *widget = qobject_cast<QWidget *>(child))
            widgets.append(widget);
    const QList<QWidget *> onTop {m_soundOnly, m_emptyState, m_buffering};
    if (widgets.size() >= onTop.size() && widgets.sliced(widgets.size() - onTop.size()) == onTop)
        return;
    for (QWidget *overlay : onTop)
        overlay->raise();
}

void PlayerSurface::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    const QRect area = rect();
    m_hostingView->setGeometry(area);
    if (m_webPlayerView)
        m_webPlayerView->setGeometry(area);
    m_emptyState->setGeometry(area);
    m_soundOnly->setGeometry(area);
    m_buffering->setGeometry(area);
}

void PlayerSurface::wheelEvent(QWheelEvent *event)
{
    // Touchpads send small deltas many times a second: they add up to whole notches.
    m_wheelTurn += event->angleDelta().y();
    const int notches = m_wheelTurn / QWheelEvent::DefaultDeltasPerStep;
    m_wheelTurn -= notches * QWheelEvent::DefaultDeltasPerStep;
    if (notches != 0)
        m_model.changeVolume(notches * KeyboardShortcuts::volumeStep);
    event->accept();
}
