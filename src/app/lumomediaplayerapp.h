#pragma once
// The application: one player model for the whole run, its window, and what the command line
// or the system (a file-open request) asks to open.
#include <QObject>
#include <QStringList>
#include <functional>
#include <memory>

class PlayerModel;
class PlayerWindow;
class MprisService;
class ScreenSaverInhibitor;

class LumoMediaPlayerApp final : public QObject
{
    Q_OBJECT

public:
    explicit LumoMediaPlayerApp(QObject *parent = nullptr);
    ~LumoMediaPlayerApp() override;

    PlayerModel &model() const { return *m_model; }
    PlayerWindow &window() const { return *m_window; }

    // Shows the window; opens the first argument once video can be drawn. An address opens in
    // the sidebar's address field.
    void start(const QStringList &arguments);
    // A later launch's arguments, given in workingDirectory: the window comes forward and
    // opens the first of them.
    void openFromLaunch(const QStringList &arguments, const QString &workingDirectory);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void open(const QString &argument, const QString &workingDirectory);
    // Runs then once video can be drawn: at once, or when the view's render context exists.
    void whenVideoCanBeDrawn(std::function<void()> then);

    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerWindow> m_window;
    std::unique_ptr<ScreenSaverInhibitor> m_screenSaverInhibitor;
    std::unique_ptr<MprisService> m_mpris;
};
