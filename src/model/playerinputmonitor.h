#pragma once
// The application-wide key-down and mouse-moved monitor of the player model: one event filter
// on the application that applies the keyboard rules and reports pointer movement.
#include "keyboardshortcuts.h"
#include <QObject>
#include <functional>

class PlayerInputMonitor final : public QObject
{
    Q_OBJECT

public:
    using ActionHandler = std::function<void(const KeyboardShortcuts::Action &)>;

    // Installs itself on the application; removed when destroyed.
    PlayerInputMonitor(ActionHandler handler, QObject *parent);
    ~PlayerInputMonitor() override;

    // True when keys go to an editable text field (its text-input query answers enabled).
    static bool textFieldHasFocus();
    // True while a menu or another pop-up is open, which takes every key.
    static bool popupIsOpen();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    ActionHandler m_handler;
};
