#include "lumomediaplayerapp.h"

#include "desktop/mprisservice.h"
#include "desktop/screensaverinhibitor.h"
#include "launchrequest.h"
#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "recording/playerrecordingcontroller.h"
#include "surface/playerhostingview.h"
#include "ui/contentview.h"
#include "ui/filedialogchooser.h"
#include "ui/playerwindow.h"
#include "webplayer/youtubeplayerregistry.h"

#include <QCoreApplication>
#include <QFileOpenEvent>

LumoMediaPlayerApp::LumoMediaPlayerApp(QObject *parent)
    : QObject(parent)
    , m_model(std::make_unique<PlayerModel>(std::make_unique<MpvPlayer>()))
    , m_window(std::make_unique<PlayerWindow>(*m_model))
    , m_screenSaverInhibitor(std::make_unique<ScreenSaverInhibitor>(*m_model))
{
    m_model->setFileChooser(fileDialogChooser(m_window.get()));
    m_model->setWebPlayerScripts(&YouTubePlayerRegistry::shared());
    // Media keys and the desktop's sound menu reach the player through MPRIS.
    m_mpris = std::make_unique<MprisService>(
        *m_model,
        MprisService::WindowActions {[this] {
                                         m_window->show();
                                         m_window->raise();
                                         m_window->activateWindow();
                                     },
                                     [this] {
                                         m_window->close();
                                     }});
    // The system hands files to a running application this way (macOS's Finder and Dock).
    QCoreApplication::instance()->installEventFilter(this);
}

LumoMediaPlayerApp::~LumoMediaPlayerApp()
{
    m_mpris.reset();
    m_screenSaverInhibitor.reset();
    // The window's render context goes before the player's handle.
    m_window.reset();
    m_model.reset();
}

void LumoMediaPlayerApp::start(const QStringList &arguments)
{
    m_window->show();
    // A recording a crash left unfinished is finished now, in the background.
    m_window->contentView()->recordingController()->recoverUnfinishedRecordings();
    if (arguments.isEmpty())
        return;
    const QString argument = arguments.constFirst();
    whenVideoCanBeDrawn([this, argument] { open(argument, QDir::currentPath()); });
}

void LumoMediaPlayerApp::openFromLaunch(const QStringList &arguments,
                                        const QString &workingDirectory)
{
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
    if (arguments.isEmpty())
        return;
    const QString argument = arguments.constFirst();
    whenVideoCanBeDrawn([this, argument, workingDirectory] { open(argument, workingDirectory); });
}

bool LumoMediaPlayerApp::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != QCoreApplication::instance() || event->type() != QEvent::FileOpen)
        return QObject::eventFilter(watched, event);
    // Played as a dropped file is: a local file only, named after its last path component, never
    // live. Anything else could be an address mpv reads itself.
    const QUrl url = static_cast<QFileOpenEvent *>(event)->url();
    if (url.isValid() && url.isLocalFile() && url.host().isEmpty()) {
        m_window->show();
        m_window->raise();
        m_window->activateWindow();
        whenVideoCanBeDrawn([this, url] { m_window->contentView()->openURL(url); });
    }
    return true;
}

void LumoMediaPlayerApp::whenVideoCanBeDrawn(std::function<void()> then)
{
    // Video needs the view's render context; it exists once the window is first drawn.
    PlayerHostingView *view = m_window->hostingView();
    if (view->isReady()) {
        then();
        return;
    }
    connect(view, &PlayerHostingView::ready, this, std::move(then), Qt::SingleShotConnection);
}

void LumoMediaPlayerApp::open(const QString &argument, const QString &workingDirectory)
{
    const LaunchRequest request = launchRequest(argument, QDir(workingDirectory));
    if (const auto *file = std::get_if<LaunchFile>(&request))
        m_model->play(file->url, file->name, false);
    else
        m_window->contentView()->openAddress(std::get<LaunchAddress>(request).text);
}
