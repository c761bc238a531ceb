#pragma once
// The application: one player model for the whole run, its window, and what the command line
// asks to open.
#include <QObject>
#include <QStringList>
#include <memory>

class PlayerModel;
class PlayerWindow;

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

private:
    void open(const QString &argument);

    std::unique_ptr<PlayerModel> m_model;
    std::unique_ptr<PlayerWindow> m_window;
};
