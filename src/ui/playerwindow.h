#pragma once
// The player window: the player area, the current notice and the last error.
#include <QWidget>

class PlayerModel;
class PlayerHostingView;
class PlayerSurface;
class QLabel;

class PlayerWindow final : public QWidget
{
    Q_OBJECT

public:
    static constexpr QSize initialSize {700, 430};

    explicit PlayerWindow(PlayerModel &model, QWidget *parent = nullptr);

    PlayerSurface *surface() const { return m_surface; }
    PlayerHostingView *hostingView() const;

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void updateToast();
    void updateError();
    void layoutOverlays();

    PlayerModel &m_model;
    PlayerSurface *m_surface = nullptr;
    QLabel *m_toast = nullptr;
    QLabel *m_error = nullptr;
};
