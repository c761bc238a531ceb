#include "windowfit.h"

#include <QLayout>
#include <QScreen>
#include <QWidget>

#include <algorithm>

namespace WindowFit {

QRect keptInside(QRect frame, QRect available)
{
    if (available.isEmpty() || available.contains(frame))
        return frame;
    frame.moveRight(std::min(frame.right(), available.right()));
    frame.moveBottom(std::min(frame.bottom(), available.bottom()));
    frame.moveLeft(std::max(frame.left(), available.left()));
    frame.moveTop(std::max(frame.top(), available.top()));
    return frame;
}

QSize largestContent(QSize available, QSize chrome)
{
    return (available - chrome).expandedTo(QSize(1, 1));
}

QSize chrome(const QWidget *window, const QWidget *content)
{
    return window->frameGeometry().size() - content->size();
}

QRect availableArea(const QWidget *window)
{
    const QScreen *screen = window->screen();
    return screen ? screen->availableGeometry() : QRect();
}

QSize resizeContent(QWidget *window, QWidget *content, QSize size)
{
    const QRect available = availableArea(window);
    const QSize around = chrome(window, content);
    // Inside the window: the menu bar and anything else beside the content.
    const QSize inside = window->size() - content->size();
    if (!available.isEmpty())
        size = size.boundedTo(largestContent(available.size(), around));
    const QSize windowSize = inside + size;
    const QSize minimum = window->minimumSize().boundedTo(windowSize);
    if (minimum != window->minimumSize())
        window->setMinimumSize(minimum);
    window->resize(windowSize);
    // A window not yet shown lays its content out only when shown; lay it out now.
    if (!window->isVisible() && window->layout())
        window->layout()->setGeometry(window->rect());
    const QPoint corner = window->frameGeometry().topLeft();
    const QRect placed = keptInside(QRect(corner, size + around), available);
    if (placed.topLeft() != corner)
        window->move(placed.topLeft());
    return size;
}

} // namespace WindowFit
