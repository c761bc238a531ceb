#pragma once
// The player window: the menu bar over the window's content. Closing it ends the application.
#include <QMainWindow>

class ContentView;
class PlayerModel;
class PlayerHostingView;
class PlayerSurface;

class PlayerWindow final : public QMainWindow
{
    Q_OBJECT

public:
    explicit PlayerWindow(PlayerModel &model, QWidget *parent = nullptr);

    ContentView *contentView() const { return m_content; }
    PlayerSurface *surface() const;
    PlayerHostingView *hostingView() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    ContentView *m_content = nullptr;
};
