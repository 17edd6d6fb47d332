# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""What the window tells a screen reader: a tree of accessible objects."""
from gi.repository import GLib

_ACCESSIBLE = "org.a11y.atspi.Accessible"
_WINDOW_COORDINATES = 1  # asking for the screen's makes the toolkit print a warning
_STATES = {4: "checked", 7: "editable", 11: "focusable", 12: "focused", 16: "modal",
           23: "selected", 24: "sensitive", 30: "visible", 43: "read-only"}
_SAME_ROLE = {"toggle button": "button"}  # what GTK 4.18 calls the button of a drop-down


class Node:
    """One accessible object at the moment of a look: kind, label, states, place, text."""

    def __init__(self, role, name, description, states, box, text):
        self.role = role
        self.name = name
        self.description = description
        self.states = states
        self.box = box
        self.text = text
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


class Reader:
    """Asks a program for its accessible objects. Throws GLib.Error if one goes meanwhile."""

    def __init__(self, bus):
        self._bus = bus
        self._fixed = {}  # what never changes of an object: role and interfaces

    def _below(self, reference):
        """The references of an accessible object and of all below it, each with its children's."""
        found, level = {}, [reference]
        while level:
            answers = self._bus.ask(level, _ACCESSIBLE, "GetChildren")
            found.update(zip(level, (children for (children,) in answers)))
            level = [child for parent in level for child in found[parent]]
        return found

    def _states(self, references):
        for (bits,) in self._bus.ask(references, _ACCESSIBLE, "GetState"):
            yield {name for bit, name in _STATES.items()
                   if bits and bits[bit // 32] >> bit % 32 & 1}

    def _names(self, references):
        """Name and description."""
        for (known,) in self._bus.ask(references, "org.freedesktop.DBus.Properties", "GetAll",
                                      GLib.Variant("(s)", (_ACCESSIBLE,))):
            yield known["Name"], known["Description"]

    def _fix(self, references):
        """Gets to know what never changes."""
        new = [reference for reference in references if reference not in self._fixed]
        for reference, (role,), (interfaces,) in zip(
                new, self._bus.ask(new, _ACCESSIBLE, "GetRoleName"),
                self._bus.ask(new, _ACCESSIBLE, "GetInterfaces")):
            self._fixed[reference] = _SAME_ROLE.get(role, role), {name.rpartition(".")[2] for name in interfaces}

    def _ask_those_with(self, interface, references, method, *arguments):
        """Asks the objects that have an interface."""
        able = [reference for reference in references if interface in self._fixed[reference][1]]
        return dict(zip(able, self._bus.ask(able, "org.a11y.atspi." + interface, method,
                                            GLib.Variant(*arguments))))

    def tree(self, root):
        """The node of an object, with all below it that shows."""
        children = self._below(root)
        references = list(children)
        self._fix(references)
        boxes = self._ask_those_with("Component", references, "GetExtents",
                                     "(u)", (_WINDOW_COORDINATES,))
        texts = self._ask_those_with("Text", references, "GetText", "(ii)", (0, 1 << 20))
        nodes = {
            reference: Node(self._fixed[reference][0], *names, states,
                            *boxes.get(reference, [None]), *texts.get(reference, [None]))
            for reference, names, states in zip(references, self._names(references),
                                                self._states(references))}
        for reference in reversed(references):  # from below
            nodes[reference].children = [nodes[child] for child in children[reference]]
            self._drop_hidden_pages(nodes[reference])
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
        references = list(self._below(root))
        self._fix(references)
        whole = next(found for found in references if self._fixed[found][0] == role
                     and "Selection" in self._fixed[found][1])
        self._bus.ask([whole], "org.a11y.atspi.Selection", "SelectChild",
                      GLib.Variant("(i)", (number,)))

    def focused(self, root):
        """Role and name of what has the focus below an object, or None."""
        ((windows,),) = self._bus.ask([root], _ACCESSIBLE, "GetChildren")
        for window in reversed(windows):
            references = list(self._below(window))
            found = [reference for reference, states in zip(references, self._states(references))
                     if "focused" in states]
            if found:
                reference = found[-1]  # a list's row, and not the button that opened it
                self._fix([reference])
                ((name, _),) = self._names([reference])
                return self._fixed[reference][0], name
        return None
