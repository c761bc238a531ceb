#include "windowactivation.h"

#include <QApplication>
#include <QTest>
#include <QWidget>

bool WindowActivation::activate(QWidget *window)
{
    QWidget *topLevel = window->window();
    topLevel->activateWindow();
    return QTest::qWaitFor([topLevel] { return QApplication::activeWindow() == topLevel; }, 5000);
}

bool WindowActivation::deactivateAll()
{
    static QWidget *const elsewhere = [] {
        auto *widget = new QWidget(nullptr, Qt::FramelessWindowHint);
        widget->setWindowTitle(QStringLiteral("elsewhere"));
        widget->setGeometry(0, 0, 8, 8);
        return widget;
    }();
    elsewhere->show();
    if (!QTest::qWaitForWindowExposed(elsewhere) || !activate(elsewhere))
        return false;
    // Hiding the active window leaves the input focus with no window of the application.
    elsewhere->hide();
    return QTest::qWaitFor([] { return QApplication::activeWindow() == nullptr; }, 5000);
}
