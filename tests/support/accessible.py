# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What the window tells a screen reader: a tree of accessible objects."""
_ACCESSIBLE = "org.a11y.atspi.Accessible"
_WINDOW_COORDINATES = 1  # asking for the screen's makes the toolkit print a warning
_STATES = {4: "checked", 7: "editable", 11: "focusable", 12: "focused", 16: "modal",
           23: "selected", 24: "sensitive", 30: "visible", 43: "read-only"}
_ROLES = {7: "checkbox", 11: "combo box", 16: "dialog", 23: "window", 29: "label", 31: "list",
          32: "list item", 37: "tab", 38: "tab list", 39: "group", 43: "button", 44: "radio",
          61: "text box",
          62: "button", 99: "group"}  # a drop-down's button, and what has a name, in GTK 4.18


class Node:
    """One accessible object at the moment of a look: kind, label, states, place, text."""

    def __init__(self, item, states, box, text):
        self.role = item.role
        self.name = item.name
        self.description = item.description
        self.states = states
        self.box = None if box is None else tuple(map(int, box))
        self.text = None if text is None else str(text)
        self.children = []

    def walk(self):
        """This object and all below it."""
        yield self
        for child in self.children:
            yield from child.walk()

    def all(self, role):
        """All objects of a role, in the order of the tree."""
        return [node for node in self.walk() if node.role == role]

    def find(self, role, label=None):
        """The first object of a role, with a label if one is given, or None."""
        for node in self.all(role):
            if label is None or label in (node.name, node.label()):
                return node
        return None

    def label(self):
        """The text that is shown on it."""
        return next((node.text for node in self.walk() if node.role == "label"), None)

    def dump(self, depth=0):
        """The whole tree as text: looks are compared by it, and failures explained."""
        line = (f"{'  ' * depth}{self.role} {self.name!r} {sorted(self.states)} {self.box} "
                f"{self.text!r}\n")
        return line + "".join(child.dump(depth + 1) for child in self.children)


def _state_names(bits):
    return {state for bit, state in _STATES.items() if bits[bit // 32] >> bit % 32 & 1}


class _Item:
    """What a program tells of an object without being asked for it."""

    def __init__(self, _reference, _application, _parent, _index, children, interfaces, name, role,
                 description, states):
        self.is_leaf = children == 0
        self.states = _state_names(states)
        self.interfaces = {interface.rpartition(".")[2] for interface in interfaces}
        self.name = str(name)
        self.role = _ROLES.get(role, f"role {role}")
        self.description = str(description)


class Reader:
    """Asks a program for its accessible objects.

    Raises dbus.DBusException or KeyError if one goes or comes meanwhile.
    """

    def __init__(self, bus):
        self._bus = bus

    def _told(self, root):
        """What a program tells at once of its objects, by reference, and of some that are gone.

        Newer toolkits (4.18) tell only of those that were named as somebody's children, and not
        of the focus.
        """
        owner, _ = root
        items = self._bus.ask((owner, "/org/a11y/atspi/cache"), "org.a11y.atspi.Cache", "GetItems")
        return {item[0]: _Item(*item) for item in items}

    def _below(self, reference):
        """An object and all below it: the references of each one's children, and its item."""
        items, children, level = self._told(reference), {}, [reference]
        while level:
            children.update(dict.fromkeys(level, ()))
            # What a program tells of itself is that it had no window.
            children.update(self._bus.ask_all(
                [found for found in level
                 if found == reference or found not in items or not items[found].is_leaf],
                _ACCESSIBLE, "GetChildren"))
            level = [child for parent in level for child in children[parent]]
        if not items.keys() >= children.keys():
            items = self._told(reference)
        return children, {found: items[found] for found in children}

    def _states(self, references):
        """The states of objects, by reference."""
        return {reference: _state_names(bits) for reference, bits
                in self._bus.ask_all(references, _ACCESSIBLE, "GetState").items()}

    def tree(self, root):
        """The node of an object, with all below it that shows."""
        children, items = self._below(root)

        def ask(interface, *question, signature):
            able = [reference for reference, item in items.items() if interface in item.interfaces]
            return self._bus.ask_all(able, f"org.a11y.atspi.{interface}", *question,
                                     signature=signature)

        states = self._states(list(items))
        boxes = ask("Component", "GetExtents", _WINDOW_COORDINATES, signature="u")
        texts = ask("Text", "GetText", 0, 1 << 20, signature="ii")
        nodes = {}
        for reference in reversed(children):  # from below
            nodes[reference] = node = Node(items[reference], states[reference],
                                           boxes.get(reference), texts.get(reference))
            node.children = [nodes[child] for child in children[reference]]
            self._drop_hidden_pages(node)
        return nodes[root]

    @staticmethod
    def _drop_hidden_pages(node):
        """A notebook's pages are all in the tree; only the one of the selected tab shows."""
        if len(node.children) != 2:
            return
        if "tab list" not in [child.role for child in node.children[0].children]:
            return
        tabs = node.children[0].all("tab")
        pages = node.children[1]
        pages.children = [page for tab, page in zip(tabs, pages.children)
                          if "selected" in tab.states]

    def select(self, root, role, number):
        """Selects a child of the first object of a role below an object."""
        _, items = self._below(root)
        whole = next(reference for reference, item in items.items() if item.role == role
                     and "Selection" in item.interfaces)
        self._bus.ask(whole, "org.a11y.atspi.Selection", "SelectChild", number, signature="i")

    def focused(self, root):
        """Role and name of what has the focus below an object, or None."""
        for window in reversed(self._bus.ask(root, _ACCESSIBLE, "GetChildren")):
            _, items = self._below(window)
            able = [reference for reference, item in items.items() if "focusable" in item.states]
            found = [reference for reference, states in self._states(able).items()
                     if "focused" in states]
            if found:
                # A list's row, not the button that opened it; it may just have got its name.
                item = self._told(root)[found[-1]]
                return item.role, item.name
        return None
