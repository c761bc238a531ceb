#include "windowtitlesetter.h"

#include "sources/displaytext.h"

#include "windowfit.h"
#include "windowsizes.h"

#include <QApplication>
#include <QLayout>
#include <QScreen>
#include <QTimer>

namespace {

// The first window of the process opens at its initial size, centred; later ones keep theirs.
bool initialSizeApplied = false;

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
    window->setWindowTitle(
        fittedTitle(DisplayText::clean(title), QFontMetrics(titleFont()), window->width()));
    const QSize before = view->size();
    // The minimum gives way to the screen, and to a size fitted to it.
    QSize minimum = WindowSizes::minimumContentSize(sidebarVisible);
    const QRect available = WindowFit::availableArea(window);
    if (!available.isEmpty())
        minimum = minimum.boundedTo(
            WindowFit::largestContent(available.size(), WindowFit::chrome(window, view)));
    if (m_fittedContent.isValid())
        minimum = minimum.boundedTo(m_fittedContent);
    // The window's minimum, not the view's: a window manager that gives less anyway gets the
    // whole control bar, the picture giving way.
    window->setMinimumSize(window->size() - before + minimum);
    const QSize widened = WindowSizes::contentSizeForSidebar(before, sidebarVisible);
    if (widened != before && !window->isFullScreen() && !window->isMaximized())
        WindowFit::resizeContent(window, view, widened);
    if (!initialSizeApplied) {
        initialSizeApplied = true;
        WindowFit::resizeContent(window, view, WindowSizes::initialContentSize);
        if (const QScreen *screen = window->screen()) {
            QRect frame(window->pos(), window->size());
            frame.moveCenter(screen->availableGeometry().center());
            window->move(frame.topLeft());
        }
    }
}

void WindowTitleSetter::setFittedContent(QSize size)
{
    m_fittedContent = size;
}
