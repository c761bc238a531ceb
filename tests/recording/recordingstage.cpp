#include "recordingstage.h"

#include "surface/playersurfaceregistry.h"
#include "windowactivation.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>
#include <QVBoxLayout>

RecordingStage::RecordingStage(QSize size)
    : m_player(std::make_unique<MpvPlayer>())
    , m_window(std::make_unique<QWidget>())
{
    auto *layout = new QVBoxLayout(m_window.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    m_view = new PlayerHostingView(m_window.get());
    m_view->setFixedSize(size);
    layout->addWidget(m_view);
    auto *strip = new QWidget(m_window.get());
    strip->setFixedHeight(stripHeight);
    layout->addWidget(strip);
    m_view->setPlayer(m_player.get());
    PlayerSurfaceRegistry::shared().setSurface(m_view);
    m_window->move(100, 80);
}

RecordingStage::~RecordingStage()
{
    PlayerSurfaceRegistry::shared().clearIfHolding(m_view);
    m_window.reset();
}

bool RecordingStage::play(const QString &file)
{
    m_window->show();
    if (!QTest::qWaitForWindowExposed(m_window.get()))
        return false;
    if (!WindowActivation::activate(m_window.get()))
        return false;
    QSignalSpy frames(m_view, &PlayerHostingView::frameDrawn);
    m_player->replaceCurrentItem(QUrl::fromLocalFile(file));
    m_player->play();
    return QTest::qWaitFor([&] { return frames.count() > 2; }, 15'000);
}
