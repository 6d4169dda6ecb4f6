# SPDX-License-Identifier: MIT
"""The agent's item in a panel, and its windows and menu as a screen reader perceives them."""
import subprocess
from dataclasses import dataclass

from session import DesktopError, call, until
from stage import HERE

WATCHER = 'org.kde.StatusNotifierWatcher'
ITEM = 'org.kde.StatusNotifierItem'
PROPERTIES = 'org.freedesktop.DBus.Properties'
# Of directions, around a title that a panel draws.
ISOLATES = '\u2066\u2067\u2069'


def start_ready(session, program):
    """Starts a program of this folder, which prints a line as soon as it is ready."""
    process = session.start(['/usr/bin/python3', '-B', str(HERE / program)], stdout=subprocess.PIPE, text=True)
    if process.stdout.readline() != 'ready\n':
        raise DesktopError(f'{program} did not start')
    return process


class Panel:
    """A StatusNotifier panel and what it is told about the agent."""

    def __init__(self, session):
        self.session = session
        self.process = None

    def start(self):
        self.process = start_ready(self.session, 'status_watcher.py')

    def start_where_there_is_none(self):
        if not call('org.freedesktop.DBus', '/org/freedesktop/DBus', 'org.freedesktop.DBus', 'NameHasOwner', '(s)', WATCHER)[0]:
            self.start()

    def end(self):
        self.session.end(self.process)

    def items(self):
        """The names on the bus of those who have an item; nobody while there is no panel."""
        from gi.repository import GLib
        try:
            found = call(WATCHER, '/StatusNotifierWatcher', PROPERTIES, 'Get', '(ss)', WATCHER, 'RegisteredStatusNotifierItems')[0]
        except GLib.Error:
            return []
        return [item.partition('/')[0].rstrip('@') for item in found]  # some panels keep the object's path too

    def expect_item(self):
        """Waits until the agent's item is there, and no second one."""
        until(lambda: len(self.items()) == 1, 'one item in the panel')
        assert self.item('Id') == 'org.lexwend.Lexwend', self.item('Id')

    def item(self, name):
        return call(self.items()[0], '/StatusNotifierItem', PROPERTIES, 'Get', '(ss)', ITEM, name)[0]

    def menu_property(self, entry, name):
        """Of the menu that is offered to panels; its entries are counted from 1."""
        path = self.item('Menu')
        return call(self.items()[0], path, 'com.canonical.dbusmenu', 'GetProperty', '(is)', entry, name)[0]

    def expect_drawn_icon(self):
        """Every size has its pixels, and more than one of them is seen."""
        pictures = self.item('IconPixmap')
        assert pictures, 'there is no icon'
        for width, height, pixels in pictures:
            assert len(pixels) == width * height * 4, (width, height, len(pixels))
            assert sum(alpha > 0 for alpha in pixels[::4]) > width, f'the icon of {width} pixels is empty'

    def click_item(self):
        self.expect_item()
        call(self.items()[0], '/StatusNotifierItem', ITEM, 'Activate', '(ii)', 0, 0)


# A panel at the top of the screen with nothing but the items, so that the first one stands in the corner.
XFCE_PANEL = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="{side}"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty"><property name="plugin-1" type="string" value="systray"/></property>
</channel>
"""


class DesktopPanel:
    """Xfce's panel, with one item to be clicked on."""
    LEFT, RIGHT = 1, 3
    SIDE = 32

    def __init__(self, session):
        self.keyboard = session.keyboard
        settings = session.home / '.config' / 'xfce4' / 'xfconf' / 'xfce-perchannel-xml' / 'xfce4-panel.xml'
        settings.parent.mkdir(parents=True)
        settings.write_text(XFCE_PANEL.format(side=self.SIDE), encoding='utf-8')
        session.start(['xfce4-panel', '--disable-wm-check'])

    def _icon_is_seen(self):
        pixels = subprocess.run(['import', '-silent', '-window', 'root', '-crop', f'{self.SIDE}x{self.SIDE}+0+0', '-depth', '8',
                                 'gray:-'], capture_output=True, check=True).stdout
        return max(pixels) - min(pixels) > 100

    def click_item(self, button):
        self.keyboard.click(self.SIDE // 2, self.SIDE // 2, button)

    def draw_menu_of_item(self, reader, title):
        """Has the panel draw the menu with that title. It answers with a menu of its own until the item is in its place."""
        def drawn():
            self.click_item(self.RIGHT)
            items = reader.hear_drawn_menu()
            if title in items:
                return items
            self.keyboard.press('Escape')
            return None
        until(self._icon_is_seen, 'the icon in the panel')
        return until(drawn, 'the panel to draw the menu of the item')


@dataclass
class Item:
    is_shown: bool
    is_enabled: bool
    is_checked: bool


class ScreenReader:
    """Reads the agent's windows from the accessibility tree, and its menu, which stands in no window, from events."""

    def __init__(self, session):
        call('org.a11y.Bus', '/org/a11y/bus', PROPERTIES, 'Set', '(ssv)', 'org.a11y.Status', 'IsEnabled', _true())
        import gi
        gi.require_version('Atspi', '2.0')
        from gi.repository import Atspi, GLib
        self.session = session
        self.atspi = Atspi
        self.error = GLib.Error
        self.context = GLib.MainContext.default()
        self.menu = None
        self.drawn_menu = None
        self.focus = None
        self.listener = Atspi.EventListener.new(self._heard)
        self.said = []
        for event in ('object:state-changed:focused', 'object:state-changed:showing', 'object:property-change:accessible-name',
                      'object:property-change:accessible-description'):
            self.listener.register(event)

    def _heard(self, event):
        try:
            role = event.source.get_role()
        except self.error:  # it was gone before its event arrived
            if event.source == self.menu:
                self.menu = None
            return
        if event.type.startswith('object:property-change'):
            self._hear_change(event)
        elif role == self.atspi.Role.POPUP_MENU and event.type.startswith('object:state-changed:showing'):
            self.menu = event.source if event.detail1 else None
            self.focus = None
        elif role == self.atspi.Role.MENU and event.type.startswith('object:state-changed:focused') and event.detail1:
            self.drawn_menu = event.source
        elif role == self.atspi.Role.MENU_ITEM and event.type.startswith('object:state-changed:focused') and event.detail1:
            self.focus = event.source.get_name()

    def _hear_change(self, event):
        """A change of what has the focus is read to the user."""
        try:
            if event.source.get_state_set().contains(self.atspi.StateType.FOCUSED):
                is_name = event.type.endswith('name')
                self.said.append(event.source.get_name() if is_name else event.source.get_description())
        except self.error:
            pass  # gone meanwhile

    def has_said(self, sentence):
        self._listen()
        return sentence in self.said

    def _listen(self):
        while self.context.iteration(False):
            pass

    def hear_menu(self):
        def shown():
            self._listen()
            return self.menu
        until(shown, 'the menu to open')

    def hear_drawn_menu(self):
        """Waits for a menu that the panel draws, and returns the visible items with their middles on the screen."""
        def shown():
            self._listen()
            return self.drawn_menu
        menu = until(shown, 'the panel to draw the menu')
        self.drawn_menu = None
        state = self.atspi.StateType
        items = {}
        for entry in self._entries(menu):
            states = entry.get_state_set()
            if entry.get_role() != self.atspi.Role.SEPARATOR and states.contains(state.SHOWING):
                place = self.atspi.Component.get_extents(entry, self.atspi.CoordType.SCREEN)
                item = Item(True, states.contains(state.ENABLED), states.contains(state.CHECKED))
                title = ''.join(c for c in entry.get_name() if c not in ISOLATES)
                items[title] = (item, (place.x + place.width // 2, place.y + place.height // 2))
        return items

    def menu_is_closed(self):
        self._listen()
        return self.menu is None

    def focused_item(self):
        self._listen()
        return self.focus

    def _entries(self, menu=None):
        menu = menu or self.menu
        return [menu.get_child_at_index(i) for i in range(menu.get_child_count())]

    def menu_titles(self):
        """From top to bottom; a separator has none."""
        return [None if entry.get_role() == self.atspi.Role.SEPARATOR else entry.get_name() for entry in self._entries()]

    def menu_items(self):
        state = self.atspi.StateType
        return {entry.get_name(): Item(*(entry.get_state_set().contains(s) for s in (state.VISIBLE, state.ENABLED, state.CHECKED)))
                for entry in self._entries() if entry.get_role() != self.atspi.Role.SEPARATOR}

    def middle_of_item(self, title):
        """Where that item of the open menu is on the screen."""
        entry = next(entry for entry in self._entries() if entry.get_name() == title)
        place = self.atspi.Component.get_extents(entry, self.atspi.CoordType.SCREEN)
        return place.x + place.width // 2, place.y + place.height // 2

    def press_item(self, title):
        """As a screen reader does it for its user, without the keyboard."""
        self._press(next(entry for entry in self._entries() if entry.get_name() == title))

    def press_button(self, window, title):
        self._press(next(button for button in self._parts(window, self.atspi.Role.PUSH_BUTTON) if button.get_name() == title))

    def _press(self, node):
        action = next(i for i in range(node.get_n_actions()) if self.atspi.Action.get_action_name(node, i) == 'Press')
        self.atspi.Action.do_action(node, action)

    def open_menu_in_tree(self):
        """The roles and names of the entries of the menu that is found in the accessibility tree; nothing while none is open."""
        try:
            for child in self._children_of_agent():
                if child.get_role() == self.atspi.Role.POPUP_MENU:
                    entries = self._entries(child)
                    return [(entry.get_role_name(), entry.get_name()) for entry in entries if entry.get_role() != self.atspi.Role.SEPARATOR]
        except self.error:
            pass  # closed while it is looked at
        return None

    def _children_of_agent(self):
        desktop = self.atspi.get_desktop(0)
        children = []
        for application in (desktop.get_child_at_index(i) for i in range(desktop.get_child_count())):
            if application is None or application.get_name() != 'Lexwend':
                continue
            application.clear_cache()
            children += [application.get_child_at_index(i) for i in range(application.get_child_count())]
        return [child for child in children if child is not None]

    def window(self, title):
        try:
            for window in self._children_of_agent():
                if window.get_name() == title:
                    return window
        except self.error:
            pass  # a window that goes while it is looked at
        return None

    def _within(self, node, role):
        found = [node] if node.get_role() == role else []
        for child in (node.get_child_at_index(i) for i in range(node.get_child_count())):
            if child is not None:
                found += self._within(child, role)
        return found

    def _parts(self, title, role):
        window = self.window(title)
        return self._within(window, role) if window else []

    def labels(self, title):
        """The texts of a window; a label that only holds a picture has none."""
        try:
            return [name for name in (label.get_name() for label in self._parts(title, self.atspi.Role.LABEL)) if name]
        except self.error:
            return []

    def buttons(self, title):
        return [button.get_name() for button in self._parts(title, self.atspi.Role.PUSH_BUTTON)]

    def button(self, title, name):
        """Whether that button can be pressed; nothing where it is missing."""
        try:
            for button in self._parts(title, self.atspi.Role.PUSH_BUTTON):
                if button.get_name() == name:
                    return button.get_state_set().contains(self.atspi.StateType.ENABLED)
        except self.error:
            pass
        return None

    def is_active(self, title):
        window = self.window(title)
        try:
            return window is not None and window.get_state_set().contains(self.atspi.StateType.ACTIVE)
        except self.error:
            return False


def _true():
    from gi.repository import GLib
    return GLib.Variant('b', True)
