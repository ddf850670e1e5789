"""Tells what an assistive program sees of an application.

Called with the application's name. Answers each line that it reads with one line of JSON: the
application's objects that are showing, each with its children; null while the application is not
there.
"""

import json
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

popups = []


def described(node):
    states = [state.value_nick for state in node.get_state_set().get_states()]
    if "showing" not in states:
        return None
    role = node.get_role_name()
    if role == "button":  # as later versions name it
        role = "push button"
    result = {
        "role": role,
        "states": states,
        "children": described_all(
            node.get_child_at_index(index) for index in range(node.get_child_count())
        ),
    }
    if role != "filler":  # what only holds others
        box = node.get_extents(Atspi.CoordType.SCREEN)
        result["name"] = node.get_name()
        result["description"] = node.get_description()
        result["place"] = [box.x, box.y, box.width, box.height]
    if role == "text":
        result["text"] = Atspi.Text.get_text(node, 0, -1)
    return result


def described_all(nodes):
    result = []
    for node in nodes:
        try:
            description = described(node) if node else None
        except GLib.Error:
            description = None  # it has gone meanwhile
        if description:
            result.append(description)
    return result


def application(name):
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        node = desktop.get_child_at_index(index)
        if node and node.get_name() == name:
            return node
    return None


def is_showing(node):
    try:
        return node.get_state_set().contains(Atspi.StateType.SHOWING)
    except GLib.Error:
        return False


def answer(name):
    node = application(name)
    if not node:
        return None
    tree = described(node)
    if not tree:
        return None
    popups[:] = [popup for popup in popups if is_showing(popup)]
    tree["children"] += described_all(popups)
    return tree


def remember(event):
    # Menus and popovers know their application, which does not count them among its children.
    try:
        parent = event.source.get_parent()
        is_window = parent and parent.get_role() == Atspi.Role.APPLICATION
        if is_window and event.source.get_index_in_parent() < 0 and event.source not in popups:
            popups.append(event.source)
    except GLib.Error:
        pass


def main():
    # Nothing is to be told that is no longer so.
    Atspi.get_desktop(0).set_cache_mask(Atspi.Cache.NONE)
    listener = Atspi.EventListener.new(remember)
    listener.register("object:state-changed:showing")

    def on_line(_source, _condition):
        if not sys.stdin.readline():
            Atspi.event_quit()
            return False
        try:
            tree = answer(sys.argv[1])
        except GLib.Error:
            tree = None
        print(json.dumps(tree), flush=True)
        return True

    GLib.io_add_watch(sys.stdin, GLib.IO_IN | GLib.IO_HUP, on_line)
    Atspi.event_main()


main()
