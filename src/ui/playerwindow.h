#pragma once
// The player window: the video, an invitation to open media while nothing is loaded, the
// buffering indicator for live streams, the current notice and the last error.
#include <QWidget>

class PlayerModel;
class PlayerHostingView;
class QLabel;
class QPushButton;

class PlayerWindow final : public QWidget
{
    Q_OBJECT

public:
    static constexpr QSize initialSize {700, 430};

    explicit PlayerWindow(PlayerModel &model, QWidget *parent = nullptr);

    PlayerHostingView *hostingView() const { return m_hostingView; }

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void updateEmptyState();
    void updateBuffering();
    void updateToast();
    void updateError();
    void layoutOverlays();

    PlayerModel &m_model;
    PlayerHostingView *m_hostingView = nullptr;
    QPushButton *m_emptyState = nullptr;
    QLabel *m_buffering = nullptr;
    QLabel *m_toast = nullptr;
    QLabel *m_error = nullptr;
};
