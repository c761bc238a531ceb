#include "networkpanel.h"

#include "keyboardreach.h"
#include "model/playermodel.h"
#include "nametoggle.h"
#include "sources/sourceaddress.h"
#include "streamaddress.h"
#include "surface/icons.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// A blank name field means no name: the stream keeps its own title.
std::optional<QString> optionalName(const QString &name)
{
    return name.trimmed().isEmpty() ? std::nullopt : std::optional<QString>(name);
}

QLabel *makeCaption(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    QFont font = label->font();
    font.setPixelSize(10);
    font.setWeight(QFont::DemiBold);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0.6);
    label->setFont(font);
    label->setStyleSheet(QStringLiteral("color: rgba(0,0,0,128);"));
    return label;
}

QPushButton *makeSmallButton(const QString &text, const QString &help, QWidget *parent)
{
    auto *button = new QPushButton(text, parent);
    button->setToolTip(help);
    button->setFixedHeight(18);
    KeyboardReach::reachable(button);
    QFont font = button->font();
    font.setPixelSize(11);
    button->setFont(font);
    return button;
}

} // namespace

NetworkPanel::NetworkPanel(PlayerModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 8);
    layout->setSpacing(7);

    auto *header = new QHBoxLayout;
    header->setSpacing(4);
    header->addWidget(makeCaption(QStringLiteral("NETWORK STREAM"), this));
    header->addStretch(1);
    m_nameToggle = new NameToggle(this);
    m_nameToggle->setExpanded(false);
    header->addWidget(m_nameToggle);
    layout->addLayout(header);
    connect(m_nameToggle, &QAbstractButton::clicked, this,
            [this] { setShowMovieName(!m_showMovieName); });

    auto *addressRow = new QHBoxLayout;
    addressRow->setSpacing(4);
    m_addressField = new QLineEdit(this);
    m_addressField->setPlaceholderText(QStringLiteral("Supports YouTube, .m3u8 and .m3u"));
    m_addressField->setAccessibleName(QStringLiteral("Stream address"));
    addressRow->addWidget(m_addressField, 1);
    m_clearButton = new QToolButton(this);
    m_clearButton->setAutoRaise(true);
    m_clearButton->setStyleSheet(QStringLiteral(
        "QToolButton:focus { border: 1.5px solid palette(highlight); border-radius: 10px; }"));
    m_clearButton->setIcon(Icons::icon(u"xmark.circle.fill", QColor(0, 0, 0, 110), 18));
    m_clearButton->setIconSize(QSize(18, 18));
    m_clearButton->setFixedSize(20, 20);
    m_clearButton->setToolTip(QStringLiteral("Clear playlist and stop network playback"));
    KeyboardReach::reachable(m_clearButton);
    addressRow->addWidget(m_clearButton);
    layout->addLayout(addressRow);
    connect(m_addressField, &QLineEdit::textChanged, this, &NetworkPanel::handleAddressChange);
    connect(m_addressField, &QLineEdit::returnPressed, this, &NetworkPanel::openStream);
    connect(m_clearButton, &QToolButton::clicked, this, &NetworkPanel::clearNetworkStream);

    m_movieNameField = new QLineEdit(this);
    m_movieNameField->setPlaceholderText(QStringLiteral("Movie or Playlist Name (optional)"));
    m_movieNameField->setAccessibleName(QStringLiteral("Movie or playlist name"));
    m_movieNameField->setVisible(false);
    layout->addWidget(m_movieNameField);
    connect(m_movieNameField, &QLineEdit::textChanged, this,
            [this](const QString &text) { m_model.updateStreamTitle(text); });
    connect(m_movieNameField, &QLineEdit::returnPressed, this,
            [this] { m_model.updateStreamTitle(m_movieNameField->text()); });

    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(6);
    m_importButton = makeSmallButton(QStringLiteral("Local M3U"),
                                     QStringLiteral("Import a local M3U playlist"), this);
    m_playButton
        = makeSmallButton(QStringLiteral("Play"), QStringLiteral("Open the stream manually"), this);
    m_playButton->setDefault(true);
    buttons->addWidget(m_importButton, 1);
    buttons->addWidget(m_playButton, 1);
    layout->addLayout(buttons);
    connect(m_importButton, &QPushButton::clicked, this, &NetworkPanel::importLocalPlaylist);
    connect(m_playButton, &QPushButton::clicked, this, &NetworkPanel::openStream);

    m_autoOpenTask.setSingleShot(true);
    m_autoOpenTask.setInterval(automaticOpenDelayMs);
    connect(&m_autoOpenTask, &QTimer::timeout, this, [this] {
        // The address changed during the wait: a newer wait, or none, stands for it.
        if (SourceAddress::normalizedRemoteAddress(address()) != m_autoOpenAddress)
            return;
        const QScopedValueRollback opening(m_opening, true);
        m_model.openRemote(m_autoOpenAddress, optionalName(movieName()));
    });

    m_error = new QLabel(this);
    m_error->setWordWrap(true);
    m_error->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_error->setStyleSheet(QStringLiteral("color: #c62828;"));
    QFont errorFont = m_error->font();
    errorFont.setPixelSize(11);
    m_error->setFont(errorFont);
    layout->addWidget(m_error);

    connect(&m_model, &PlayerModel::isLoadingChanged, this, &NetworkPanel::updatePlayButton);
    connect(&m_model, &PlayerModel::errorMessageChanged, this, &NetworkPanel::updateError);
    updatePlayButton();
    updateError();
}

QString NetworkPanel::address() const
{
    return m_addressField->text();
}

void NetworkPanel::setAddress(const QString &text)
{
    m_addressField->setText(text);
}

QString NetworkPanel::movieName() const
{
    return m_movieNameField->text();
}

bool NetworkPanel::isMovieNameToggleHovered() const
{
    return m_nameToggle->isHovered();
}

void NetworkPanel::setShowMovieName(bool show)
{
    if (m_showMovieName == show)
        return;
    m_showMovieName = show;
    m_nameToggle->setExpanded(show);
    m_movieNameField->setVisible(show);
}

void NetworkPanel::focusAddressField()
{
    m_addressField->setFocus(Qt::OtherFocusReason);
}

bool NetworkPanel::isAddressFieldFocused() const
{
    return m_addressField->hasFocus();
}

void NetworkPanel::handleAddressChange(const QString &text)
{
    const QString cleaned = StreamAddress::cleaned(text);
    if (cleaned != text) {
        // Setting the clean text comes back here with it.
        m_addressField->setText(cleaned);
        return;
    }
    if (cleaned.isEmpty())
        m_model.discardLastRemoteSource();
    scheduleAutomaticOpen(cleaned);
}

void NetworkPanel::scheduleAutomaticOpen(const QString &text)
{
    cancelAutomaticOpen();
    const std::optional<QString> normalized = StreamAddress::automaticOpenAddress(text);
    if (!normalized)
        return;
    m_autoOpenAddress = *normalized;
    m_autoOpenTask.start();
}

void NetworkPanel::cancelAutomaticOpen()
{
    m_autoOpenTask.stop();
}

void NetworkPanel::openStream()
{
    cancelAutomaticOpen();
    const QScopedValueRollback opening(m_opening, true);
    m_model.openRemote(address(), optionalName(movieName()));
}

void NetworkPanel::importLocalPlaylist()
{
    cancelAutomaticOpen();
    Q_EMIT filtersResetRequested();
    m_model.importLocalM3U(optionalName(movieName()));
}

void NetworkPanel::clearNetworkStream()
{
    cancelAutomaticOpen();
    m_addressField->clear();
    m_movieNameField->clear();
    Q_EMIT filtersResetRequested();
    m_model.clearNetworkStream();
    focusAddressField();
}

void NetworkPanel::updatePlayButton()
{
    m_playButton->setText(m_model.isLoading() ? QStringLiteral("Loading") : QStringLiteral("Play"));
}

void NetworkPanel::updateError()
{
    m_error->setText(m_model.errorMessage());
    m_error->setVisible(!m_model.errorMessage().isNull());
}
