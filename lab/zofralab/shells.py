# SPDX-License-Identifier: GPL-3.0-or-later
"""Whole desktops for a screen nobody looks at: Plasma, GNOME and Cinnamon, with their panels at the top.

Each is as its packages install it, but for what moves by itself (animations, clocks) and for pictures as wallpaper."""

import os
import shutil

from .bus import Peer
from .panels import HEIGHT, WIDTH, Panel
from .picture import Box
from .process import wait_until

_LIBRARIES = "/usr/lib/x86_64-linux-gnu"

PLASMA = """[Containments][1]
formfactor=2
immutability=1
lastScreen=0
location=3
plugin=org.kde.panel

[Containments][1][Applets][2]
immutability=1
plugin=org.kde.plasma.icontasks

[Containments][1][Applets][2][Configuration][General]
launchers=

[Containments][1][Applets][3]
immutability=1
plugin=org.kde.plasma.systemtray

[Containments][1][Applets][3][Configuration]
SystrayContainmentId=4

[Containments][1][General]
AppletOrder=2;3

[Containments][4]
formfactor=2
immutability=1
lastScreen=0
location=3
plugin=org.kde.plasma.private.systemtray

[Containments][4][General]
extraItems=%(items)s
knownItems=org.kde.plasma.battery,org.kde.plasma.bluetooth,org.kde.plasma.brightness,org.kde.plasma.cameraindicator,\
org.kde.plasma.clipboard,org.kde.plasma.devicenotifier,org.kde.plasma.keyboardindicator,org.kde.plasma.keyboardlayout,\
org.kde.plasma.manage-inputmethod,org.kde.plasma.mediacontroller,org.kde.plasma.networkmanagement,\
org.kde.plasma.nightcolorcontrol,org.kde.plasma.notifications,org.kde.plasma.printmanager,org.kde.plasma.vault,\
org.kde.plasma.volume,org.kde.kscreen

[Containments][5]
formfactor=0
immutability=1
lastScreen=0
location=0
plugin=org.kde.desktopcontainment
wallpaperplugin=org.kde.color

[Containments][5][Wallpaper][org.kde.color][General]
Color=32,64,96
"""

PLASMA_SHELL = f"""[PlasmaViews][Panel 1]
floating=0

[PlasmaViews][Panel 1][Defaults]
thickness={HEIGHT}
"""

PLASMA_GLOBALS = """[KDE]
AnimationDurationFactor=0
ShowDeleteCommand=false
"""

KWIN = """[Compositing]
Enabled=%(compositing)s

[Wayland]
InputMethod=
"""

GNOME = """[org/gnome/shell]
enabled-extensions=['ubuntu-appindicators@ubuntu.com']
disable-user-extensions=false
welcome-dialog-last-shown-version='99'
favorite-apps=@as []

[org/gnome/desktop/interface]
enable-animations=false
enable-hot-corners=false

[org/gnome/desktop/background]
picture-options='none'
picture-uri=''
primary-color='#204060'
color-shading-type='solid'

[org/gnome/desktop/screensaver]
lock-enabled=false

[org/gnome/desktop/session]
idle-delay=uint32 0

[org/gnome/desktop/notifications]
show-banners=false
"""

CINNAMON = f"""[org/cinnamon]
panels-enabled=['1:0:top']
panels-height=['1:{HEIGHT}']
enabled-applets=%(applets)s
desktop-effects=false
desktop-effects-workspace=false
startup-animation=false

[org/cinnamon/desktop/background]
picture-options='none'
primary-color='#204060'
"""


_PROJECT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def _install(screen):
    """Give the desktop what it has of the program once that is installed: its names, icons and searches."""
    share = os.path.join(screen.home, "share")
    for source, target in (("be.zofra.ZofraZofra.desktop", "applications"),
                           ("be.zofra.ZofraZofra.search-provider.ini", "gnome-shell/search-providers"),
                           ("be.zofra.ZofraZofra.krunner.desktop", "krunner/dbusplugins")):
        os.makedirs(os.path.join(share, target), exist_ok=True)
        shutil.copy(os.path.join(_PROJECT, "packaging", "desktop", source), os.path.join(share, target))
    binary = os.path.abspath(os.environ.get("ZOFRA_BINARY")
                             or os.path.join(_PROJECT, "build", "release", "bin", "zofrazofra"))
    folder = os.path.dirname(binary)
    shutil.copytree(os.path.join(os.path.dirname(folder), "share", "icons"), os.path.join(share, "icons"),
                    dirs_exist_ok=True)
    screen.environment["XDG_DATA_DIRS"] = f"{share}:/usr/local/share:/usr/share"
    # A desktop file whose program is nowhere is none.
    screen.environment["PATH"] = f"{folder}:{screen.environment['PATH']}"


def _write(screen, name, text):
    path = os.path.join(screen.home, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)


class Plasma(Panel):
    """Plasma on X11: passes both clicks on."""

    desktop = "KDE"
    programs = ("plasmashell", "kwin_x11", "kded5", f"{_LIBRARIES}/libexec/kactivitymanagerd",
                "/usr/share/plasma/plasmoids/org.kde.plasma.systemtray")
    manager = ("kwin_x11",)
    #: Parts of the tray besides the items of programs.
    items = "none"

    def __init__(self):
        super().__init__()
        self._services = []

    def configure(self, screen, compositing="false"):
        """Write what it reads, before its first part is started."""
        _install(screen)
        screen.environment.update(KDE_FULL_SESSION="true", KDE_SESSION_VERSION="5", QT_LOGGING_RULES="*.debug=false",
                                  XDG_MENU_PREFIX="plasma-", LIBGL_ALWAYS_SOFTWARE="1")
        _write(screen, "plasma-org.kde.plasma.desktop-appletsrc", PLASMA % {"items": self.items})
        _write(screen, "plasmashellrc", PLASMA_SHELL)
        _write(screen, "kdeglobals", PLASMA_GLOBALS)
        _write(screen, "kwinrc", KWIN % {"compositing": compositing})

    def start(self, screen):
        if not self._services:
            self._services = [screen.spawn(program) for program in self.programs[2:4]]
        self._spawn(screen, "plasmashell")
        self._wait(screen)
        screen.still_picture(screen.panel_box, seconds=3.0)

    def _wait(self, screen):
        """Until the panel is there; its parts come later, one after the other."""
        wait_until(lambda: any(w.box == screen.panel_box for w in screen.windows("plasmashell")), 60, "the panel", 0.1)


class PlasmaOnWayland(Plasma):
    """The same on Wayland: it draws the menu."""

    programs = (*Plasma.programs, "kwin_wayland")
    #: Its compositor as a window of the screen.
    compositor = ("kwin_wayland", "--width", str(WIDTH), "--height", "800", "--no-lockscreen", "--socket", "wayland-0",
                  "--x11-display")

    def configure(self, screen, compositing="true"):
        super().configure(screen, compositing)
        # Without a graphics card it can only paint; who may ask for what is told by desktop files, not by tests.
        screen.environment.update(KWIN_COMPOSE="Q", KWIN_WAYLAND_NO_PERMISSION_CHECKS="1")

    def start(self, screen):
        screen.environment["QT_QPA_PLATFORM"] = "wayland"
        super().start(screen)

    def _wait(self, screen):
        nothing = screen.picture(screen.panel_box)
        wait_until(lambda: screen.picture(screen.panel_box).difference(nothing), 60, "the panel", 0.1)


class Gnome(Panel):
    """GNOME with the extension for status items: it draws the menu. Panel and compositor are one program."""

    desktop = "GNOME"
    programs = ("gnome-shell", "/usr/share/gnome-shell/extensions/ubuntu-appindicators@ubuntu.com")
    manager = ()
    options = ("--x11",)

    def configure(self, screen):
        """Write what it reads, before its first part is started."""
        _install(screen)
        screen.environment.update(GSETTINGS_BACKEND="keyfile", LIBGL_ALWAYS_SOFTWARE="1", XDG_MENU_PREFIX="gnome-",
                                  MUTTER_DEBUG_DUMMY_MODE_SPECS=f"{WIDTH}x800")
        _write(screen, "glib-2.0/settings/keyfile", GNOME)

    def box(self, _whole):
        """What of the panel changes only with its items: a clock is in its middle."""
        return Box(800, 0, WIDTH - 800, 28)

    def start(self, screen):
        self._spawn(screen, "gnome-shell", *self.options)
        wait_until(lambda: screen.picture(Box(0, 0, WIDTH, 28)).drawn() > 0.02, 60, "the panel", 0.1)
        # The extension comes after the panel.
        bus = Peer(screen.environment["DBUS_SESSION_BUS_ADDRESS"])
        try:
            bus.wait_for_name("org.kde.StatusNotifierWatcher", 60)
        finally:
            bus.close()
        # It begins with the view of all windows, and takes its time to listen to keys.
        bare = Box(0, HEIGHT, WIDTH, 700)

        def shows_the_desktop():
            screen.key("Escape")
            return screen.still_picture(bare, seconds=1.0).drawn() < 0.01
        wait_until(shows_the_desktop, 60, "the desktop", 0.1)
        screen.still_picture(screen.panel_box, seconds=3.0)


class GnomeOnWayland(Gnome):
    """The same on Wayland, in a window of the screen."""

    options = ("--wayland", "--nested", "--wayland-display", "wayland-0")
    compositor = ()


class Cinnamon(Panel):
    """Cinnamon: its watcher passes both clicks on."""

    desktop = "X-Cinnamon"
    programs = ("cinnamon", "/usr/libexec/xapps/sn-watcher/xapp-sn-watcher")
    manager = ()
    applets = "['panel1:right:0:xapp-status@cinnamon.org:1', 'panel1:left:0:grouped-window-list@cinnamon.org:2']"

    def configure(self, screen):
        """Write what it reads, before its first part is started."""
        _install(screen)
        screen.environment.update(GSETTINGS_BACKEND="keyfile", LIBGL_ALWAYS_SOFTWARE="1")
        _write(screen, "glib-2.0/settings/keyfile", CINNAMON % {"applets": self.applets})

    def start(self, screen):
        nothing = screen.picture(screen.panel_box)
        self._spawn(screen, "cinnamon")
        wait_until(lambda: screen.picture(screen.panel_box).difference(nothing), 60, "the panel", 0.1)
        screen.still_picture(seconds=1.0)
        self._spawn(screen, self.programs[1])
