# SPDX-License-Identifier: MIT
"""An XEmbed tray, and what stands on the screen: the agent's icon, its windows, their pixels."""
import subprocess

from session import until

PANEL = """rounded = 0
border_width = 0
background_color = {color} 100
border_color = {color} 100
panel_items = S
panel_size = 100% 30
panel_background_id = 1
systray_background_id = 1
systray_padding = 4 2 4
"""


def window_tree():
    """The display's windows line by line, or nothing where one went while they were listed."""
    tree = subprocess.run(['xwininfo', '-root', '-tree'], capture_output=True, text=True, check=False)
    return tree.stdout.splitlines() if tree.returncode == 0 else None


def _is_of_tray(line):
    return '"tint2"' in line


class Tray:
    """A panel with an XEmbed tray, in a color of its own."""

    def __init__(self, session):
        self.session = session
        self.process = None

    def start(self, color='#303030', template=PANEL):
        config = self.session.folder / f'tint2rc{color}'
        config.write_text(template.format(color=color), encoding='utf-8')
        self.process = self.session.start(['tint2', '-c', str(config)])

    def end(self):
        """Ends it and waits until its windows are gone, so that the next icon found is one in the next tray."""
        def gone():
            lines = window_tree()
            return lines is not None and not any(map(_is_of_tray, lines))
        self.session.end(self.process)
        until(gone, 'the tray to go')


class Screen:
    """What can be seen of the agent."""

    def __init__(self, session):
        self.session = session
        self.keyboard = session.keyboard

    def windows(self):
        """The agent's visible windows as (x, y, width, height)."""
        def xdotool(*arguments):
            return subprocess.run(('xdotool',) + arguments, capture_output=True, text=True, check=False).stdout

        result = []
        for window in xdotool('search', '--onlyvisible', '--class', 'lexwend').split():
            values = dict(line.split('=') for line in xdotool('getwindowgeometry', '--shell', window).splitlines())
            if 'WIDTH' in values:
                result.append(tuple(int(values[name]) for name in ('X', 'Y', 'WIDTH', 'HEIGHT')))
        return result

    def window(self, what, width, height):
        """Waits for a window of such a size (lowest and highest) and returns its geometry."""
        return until(lambda: next((w for w in self.windows()
                                   if width[0] <= w[2] <= width[1] and height[0] <= w[3] <= height[1]), None), what)

    def gone(self, geometry, what):
        until(lambda: geometry not in self.windows(), f'{what} to go')

    def _icon_in_tray(self):
        depth_of_tray = None
        for line in window_tree() or []:
            depth = len(line) - len(line.lstrip())
            if _is_of_tray(line):
                depth_of_tray = depth
            elif depth_of_tray is not None and depth <= depth_of_tray:
                depth_of_tray = None
            elif depth_of_tray is not None and 'lexwend' in line.lower():
                size, place = line.split()[-2:]
                width, height = (int(n) for n in size.split('+')[0].split('x'))
                x, y = (int(n) for n in place.split('+')[1:])
                told = subprocess.run(['xwininfo', '-id', line.split()[0]], capture_output=True, text=True, check=False).stdout
                return (x, y, width, height) if 'IsViewable' in told and width > 1 else None
        return None

    def icon(self):
        """Waits until the icon stands still inside a tray, and returns its geometry."""
        def settled():
            place = self._icon_in_tray()
            return place if place == self._icon_in_tray() else None
        return until(settled, 'the icon in the tray')

    def icon_pixels(self):
        """The gray levels where the icon stands, row by row."""
        return self.pixels(self.icon())

    def pixels(self, place):
        x, y, width, height = place
        return subprocess.run(['import', '-silent', '-window', 'root', '-crop', f'{width}x{height}+{x}+{y}', '-depth', '8',
                               'gray:-'], capture_output=True, check=True).stdout

    def click_icon(self):
        x, y, width, height = self.icon()
        self.keyboard.click(x + width // 2, y + height // 2)

    def has_keyboard(self, what, size):
        """Waits until a window of that size is the one that keys go to."""
        def active_size():
            text = subprocess.run(['xdotool', 'getactivewindow', 'getwindowgeometry', '--shell'], capture_output=True,
                                  text=True, check=False).stdout
            values = dict(line.split('=') for line in text.splitlines() if '=' in line)
            return (int(values.get('WIDTH', 0)), int(values.get('HEIGHT', 0)))
        until(lambda: active_size() == size, f'{what} to have the keyboard')
