#include "windowtitlesetter.h"

#include "sources/displaytext.h"

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
    window->setWindowTitle(
        fittedTitle(DisplayText::clean(title), QFontMetrics(titleFont()), window->width()));
    // The size before the new minimum, which Qt enforces at once, widens the view.
    const QSize before = view->size();
    const QSize chrome = window->size() - before;
    const QSize minimum = WindowSizes::minimumContentSize(sidebarVisible);
    view->setMinimumSize(minimum);
    // A layout only ever raises its window's minimum; lowering it is done here.
    if (window != view)
        window->setMinimumSize(chrome + minimum);
    const QSize widened = WindowSizes::contentSizeForSidebar(before, sidebarVisible);
    if (widened != before && !window->isFullScreen() && !window->isMaximized())
        window->resize(chrome + widened);
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
