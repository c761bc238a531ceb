#!/usr/bin/python3
"""What an assistive tool sees of a running player, through AT-SPI (Debian's python3-pyatspi).

atspicontrols.py PID            prints the application's objects, one JSON object a line:
                                {"role", "name", "showing", "actions"}
atspicontrols.py PID NAME       does the first action of the showing object called NAME and
                                prints {"pressed": NAME, "action": ACTION}; exit status 1 when
                                there is no such object or it has no action.
"""
import json
import sys

import pyatspi


def application(pid):
    desktop = pyatspi.Registry.getDesktop(0)
    for app in desktop:
        if app is not None and app.get_process_id() == pid:
            return app
    return None


def walk(node, depth=0):
    if node is None or depth > 60:
        return
    yield node
    for child in node:
        yield from walk(child, depth + 1)


def role(node):
    # Newer AT-SPI names the push button's role "button"; the same role reads the same here on
    # every release.
    if node.getRole() == pyatspi.ROLE_PUSH_BUTTON:
        return "push button"
    return node.getRoleName()


def actions(node):
    try:
        action = node.queryAction()
    except NotImplementedError:
        return []
    return [action.getName(i) for i in range(action.nActions)]


def main():
    pid = int(sys.argv[1])
    app = application(pid)
    if app is None:
        print("no application with process %d on the accessibility bus" % pid, file=sys.stderr)
        return 2
    if len(sys.argv) == 2:
        for node in walk(app):
            showing = node.getState().contains(pyatspi.STATE_SHOWING)
            print(json.dumps({"role": role(node), "name": node.name,
                              "showing": showing, "actions": actions(node)}))
        return 0
    wanted = sys.argv[2]
    for node in walk(app):
        if node.name != wanted or not node.getState().contains(pyatspi.STATE_SHOWING):
            continue
        names = actions(node)
        if not names:
            continue
        node.queryAction().doAction(0)
        print(json.dumps({"pressed": wanted, "action": names[0]}))
        return 0
    print("nothing showing is called %r" % wanted, file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
