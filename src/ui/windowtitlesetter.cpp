#include "windowtitlesetter.h"

#include "windowsizes.h"

#include <QApplication>
#include <QLayout>
#include <QScreen>
#include <QTimer>

namespace {

// The first window of the process opens at its initial size, centred; later ones keep theirs.
bool initialSizeApplied = false;

void resizeContent(QWidget *window, QWidget *view, QSize contentSize)
{
    window->resize(window->size() - view->size() + contentSize);
    // A window not yet shown lays its content out only when shown; lay it out now.
    if (window->layout())
        window->layout()->setGeometry(window->rect());
}

} // namespace

WindowTitleSetter::WindowTitleSetter(QWidget *view)
    : QObject(view)
    , m_view(view)
{ }

QFont WindowTitleSetter::titleFont()
{
    QFont font = QApplication::font();
    font.setWeight(QFont::DemiBold);
    return font;
}

QString WindowTitleSetter::fittedTitle(const QString &title, const QFontMetrics &metrics,
                                       int barWidth)
{
    return metrics.elidedText(title, Qt::ElideMiddle, std::max(barWidth - titleMargin, 0));
}

void WindowTitleSetter::update(const QString &title, bool sidebarVisible)
{
    m_title = title;
    m_sidebarVisible = sidebarVisible;
    if (m_scheduled)
        return;
    m_scheduled = true;
    QTimer::singleShot(0, this, [this] {
        m_scheduled = false;
        applyNow(m_title, m_sidebarVisible);
    });
}

void WindowTitleSetter::applyNow(const QString &title, bool sidebarVisible)
{
    m_title = title;
    m_sidebarVisible = sidebarVisible;
    QWidget *view = m_view;
    if (!view)
        return;
    QWidget *window = view->window();
    if (window->layout())
        window->layout()->activate();
    window->setWindowTitle(fittedTitle(title, QFontMetrics(titleFont()), window->width()));
    view->setMinimumSize(WindowSizes::minimumContentSize(sidebarVisible));
    const QSize widened = WindowSizes::contentSizeForSidebar(view->size(), sidebarVisible);
    if (widened != view->size() && !window->isFullScreen() && !window->isMaximized())
        resizeContent(window, view, widened);
    if (!initialSizeApplied) {
        initialSizeApplied = true;
        resizeContent(window, view, WindowSizes::initialContentSize);
        if (const QScreen *screen = window->screen()) {
            QRect frame(window->pos(), window->size());
            frame.moveCenter(screen->availableGeometry().center());
            window->move(frame.topLeft());
        }
    }
}
