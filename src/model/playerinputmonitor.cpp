#include "playerinputmonitor.h"

#include "playernotifications.h"

#include <QGuiApplication>
#include <QInputMethodQueryEvent>
#include <QKeyEvent>
#include <QWindow>

#include <algorithm>

PlayerInputMonitor::PlayerInputMonitor(ActionHandler handler, QObject *parent)
    : QObject(parent)
    , m_handler(std::move(handler))
{
    QCoreApplication::instance()->installEventFilter(this);
}

PlayerInputMonitor::~PlayerInputMonitor()
{
    if (QCoreApplication *application = QCoreApplication::instance())
        application->removeEventFilter(this);
}

bool PlayerInputMonitor::textFieldHasFocus()
{
    QObject *focus = QGuiApplication::focusObject();
    if (!focus)
        return false;
    // Editable text fields accept text input; buttons, sliders and read-only fields do not.
    QInputMethodQueryEvent query(Qt::ImEnabled | Qt::ImReadOnly);
    QCoreApplication::sendEvent(focus, &query);
    return query.value(Qt::ImEnabled).toBool() && !query.value(Qt::ImReadOnly).toBool();
}

bool PlayerInputMonitor::popupIsOpen()
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    return std::any_of(windows.cbegin(), windows.cend(), [](const QWindow *window) {
        return window->type() == Qt::Popup && window->isVisible();
    });
}

bool PlayerInputMonitor::eventFilter(QObject *watched, QEvent *event)
{
    // Input reaches the window first and is then handed to its widgets; looking at the window
    // alone sees each event once.
    if (!watched->isWindowType())
        return false;
    switch (event->type()) {
    case QEvent::KeyPress: {
        // An open menu has the keyboard: its arrows, Return and letters are its own.
        if (popupIsOpen())
            return false;
        const auto *key = static_cast<QKeyEvent *>(event);
        const QObject *focus = QGuiApplication::focusObject();
        const QWindow *window = QGuiApplication::focusWindow();
        const KeyboardShortcuts::Context context {
            textFieldHasFocus(),
            focus && focus->inherits("QAbstractItemView"),
            window && window->windowStates().testFlag(Qt::WindowFullScreen),
            focus && focus->inherits("QAbstractSlider"),
        };
        const KeyboardShortcuts::Action action
            = KeyboardShortcuts::action(key->key(), key->modifiers(), key->isAutoRepeat(), context);
        if (std::holds_alternative<KeyboardShortcuts::PassOn>(action))
            return false;
        m_handler(action);
        return true;
    }
    case QEvent::MouseMove:
        Q_EMIT PlayerNotifications::shared().playerMouseMoved(static_cast<QWindow *>(watched));
        return false;
    default:
        return false;
    }
}
