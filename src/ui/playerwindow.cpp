#include "playerwindow.h"

#include "model/mpvplayer.h"
#include "model/playermodel.h"
#include "surface/playerhostingview.h"

#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QVBoxLayout>

namespace {
constexpr int toastInset = 14;
} // namespace

PlayerWindow::PlayerWindow(PlayerModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
{
    setAutoFillBackground(true);
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
    setMinimumSize(520, 360);
    resize(initialSize);

    m_hostingView = new PlayerHostingView(this);
    m_hostingView->setPlayer(qobject_cast<MpvPlayer *>(&model.player()));

    m_emptyState = new QPushButton(this);
    m_emptyState->setFlat(true);
    m_emptyState->setCursor(Qt::PointingHandCursor);
    m_emptyState->setToolTip(QStringLiteral("Open Media"));
    m_emptyState->setStyleSheet(QStringLiteral("QPushButton { background: black; border: none; }"));
    auto *emptyLayout = new QVBoxLayout(m_emptyState);
    emptyLayout->setContentsMargins(28, 28, 28, 28);
    emptyLayout->addStretch();
    const auto addLine = [&](const QString &text, const QString &style) {
        auto *label = new QLabel(text, m_emptyState);
        label->setAlignment(Qt::AlignCenter);
        label->setStyleSheet(style);
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
        emptyLayout->addWidget(label);
    };
    addLine(QStringLiteral("▶"),
            QStringLiteral("color: rgba(255,255,255,97); font-size: 52px; font-weight: 200;"));
    addLine(QStringLiteral("Click to open media"),
            QStringLiteral("color: rgba(255,255,255,184); font-weight: 600;"));
    addLine(QStringLiteral("or drop a video or audio file here"),
            QStringLiteral("color: rgba(255,255,255,115); font-size: 11px;"));
    emptyLayout->addStretch();
    connect(m_emptyState, &QPushButton::clicked, &m_model, &PlayerModel::openFile);

    m_buffering = new QLabel(QStringLiteral("Buffering…"), this);
    m_buffering->setAlignment(Qt::AlignCenter);
    m_buffering->setStyleSheet(
        QStringLiteral("color: rgba(255,255,255,217); font-size: 11px; font-weight: 500;"));
    m_buffering->setAttribute(Qt::WA_TransparentForMouseEvents);

    m_toast = new QLabel(this);
    m_toast->setAlignment(Qt::AlignCenter);
    m_toast->setWordWrap(true);
    m_toast->setStyleSheet(QStringLiteral(
        "color: white; background: rgba(0,0,0,209); border-radius: 8px; padding: 8px 14px;"));
    m_toast->setAttribute(Qt::WA_TransparentForMouseEvents);

    m_error = new QLabel(this);
    m_error->setAlignment(Qt::AlignCenter);
    m_error->setWordWrap(true);
    m_error->setStyleSheet(QStringLiteral("color: #ff6b6b; background: rgba(0,0,0,170);"));

    connect(&m_model.player(), &MediaPlayer::hasItemChanged, this, &PlayerWindow::updateEmptyState);
    connect(&m_model, &PlayerModel::youtubeContentChanged, this, &PlayerWindow::updateEmptyState);
    connect(&m_model, &PlayerModel::isBufferingChanged, this, &PlayerWindow::updateBuffering);
    connect(&m_model, &PlayerModel::isLiveStreamChanged, this, &PlayerWindow::updateBuffering);
    connect(&m_model, &PlayerModel::toastMessageChanged, this, &PlayerWindow::updateToast);
    connect(&m_model, &PlayerModel::errorMessageChanged, this, &PlayerWindow::updateError);
    connect(&m_model, &PlayerModel::titleChanged, this,
            [this] { setWindowTitle(m_model.title()); });

    setWindowTitle(m_model.title());
    updateEmptyState();
    updateBuffering();
    updateToast();
    updateError();
}

void PlayerWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_model.installKeyboardShortcuts();
}

void PlayerWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutOverlays();
}

void PlayerWindow::layoutOverlays()
{
    const QRect area = rect();
    m_hostingView->setGeometry(area);
    m_emptyState->setGeometry(area);
    m_buffering->setGeometry(area);
    const int toastWidth = std::min(area.width() - 2 * toastInset, 520);
    m_toast->setFixedWidth(std::max(toastWidth, 0));
    m_toast->adjustSize();
    m_toast->move((area.width() - m_toast->width()) / 2, toastInset);
    m_error->setFixedWidth(area.width());
    m_error->adjustSize();
    m_error->move(0, area.height() - m_error->height());
}

void PlayerWindow::updateEmptyState()
{
    m_emptyState->setVisible(!m_model.player().hasItem() && !m_model.youtubeContent());
}

void PlayerWindow::updateBuffering()
{
    m_buffering->setVisible(m_model.isLiveStream() && m_model.isBuffering());
}

void PlayerWindow::updateToast()
{
    m_toast->setText(m_model.toastMessage());
    m_toast->setVisible(!m_model.toastMessage().isNull());
    layoutOverlays();
    m_toast->raise();
}

void PlayerWindow::updateError()
{
    m_error->setText(m_model.errorMessage());
    m_error->setVisible(!m_model.errorMessage().isNull());
    layoutOverlays();
}
