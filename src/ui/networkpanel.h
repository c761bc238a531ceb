#pragma once
// The upper part of the sidebar: the stream address field that opens a typed or pasted address
// by itself once typing stops, an optional name for the stream, importing a local playlist and
// clearing the network stream. The model's last error shows under its buttons.
#include <QTimer>
#include <QWidget>

class NameToggle;
class PlayerModel;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

class NetworkPanel final : public QWidget
{
    Q_OBJECT

public:
    // How long the address must stay unchanged before it opens by itself.
    static constexpr int automaticOpenDelayMs = 450;

    explicit NetworkPanel(PlayerModel &model, QWidget *parent = nullptr);

    QString address() const;
    // As if typed: the text is cleaned and may open by itself.
    void setAddress(const QString &text);
    QString movieName() const;
    bool showsMovieName() const { return m_showMovieName; }
    void setShowMovieName(bool show);
    bool isMovieNameToggleHovered() const;
    bool isAutomaticOpenPending() const { return m_autoOpenTask.isActive(); }

    // Keyboard focus in the address field.
    void focusAddressField();
    bool isAddressFieldFocused() const;
    // The panel is opening what the address field holds (typed, pasted, Return or "Play").
    bool isOpening() const { return m_opening; }

    void openStream();
    void importLocalPlaylist();
    void clearNetworkStream();

    QLineEdit *addressField() const { return m_addressField; }
    QLineEdit *movieNameField() const { return m_movieNameField; }
    NameToggle *nameToggle() const { return m_nameToggle; }
    QToolButton *clearButton() const { return m_clearButton; }
    QPushButton *importButton() const { return m_importButton; }
    QPushButton *playButton() const { return m_playButton; }

Q_SIGNALS:
    // Importing and clearing start the channel list's filters afresh.
    void filtersResetRequested();

private:
    void handleAddressChange(const QString &text);
    void scheduleAutomaticOpen(const QString &text);
    void cancelAutomaticOpen();
    void updatePlayButton();
    void updateError();

    PlayerModel &m_model;
    bool m_showMovieName = false;
    bool m_opening = false;
    QTimer m_autoOpenTask;
    QString m_autoOpenAddress;

    NameToggle *m_nameToggle = nullptr;
    QWidget *m_nameRow = nullptr;
    QLineEdit *m_addressField = nullptr;
    QToolButton *m_clearButton = nullptr;
    QLineEdit *m_movieNameField = nullptr;
    QPushButton *m_importButton = nullptr;
    QPushButton *m_playButton = nullptr;
    QLabel *m_error = nullptr;
};
