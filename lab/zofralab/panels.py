# SPDX-License-Identifier: GPL-3.0-or-later
"""Real panels for a screen nobody looks at. Each is at the top of the screen and shows status items at its right end."""

import json
import os
import shutil

from .process import wait_until

#: Of the panel, and with it of the screen.
WIDTH = 1280
HEIGHT = 36

LXQT = """[General]
__userfile__=true
iconTheme=hicolor
panels=panel1

[panel1]
alignment=-1
background-color=@Variant(\\0\\0\\0\\x43\\x1\\xff\\xff\\xee\\xee\\xf0\\xf0\\xf4\\xf4\\0\\0)
desktop=0
hidable=false
iconSize=22
lineCount=1
opacity=100
panelSize=%d
plugins=spacer, statusnotifier
position=Top
reserve-space=true
width=100
width-percent=true

[spacer]
alignment=Left
expandable=true
type=spacer

[statusnotifier]
alignment=Right
type=statusnotifier
"""

XFCE = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="false"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="double" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="%(height)d"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="%(plugin)s">
      <property name="square-icons" type="bool" value="true"/>
      <property name="known-legacy-items" type="array"/>
    </property>
  </property>
</channel>
"""


class Panel:
    """One kind of panel. `start` and `stop` may be called again and again."""

    #: What XDG_CURRENT_DESKTOP is where this panel is at home.
    desktop = ""
    #: The programs that it consists of, and the libraries that they load.
    programs = ()
    #: The window manager that it is used with; none where it manages windows itself.
    manager = ("openbox", "--sm-disable")

    def __init__(self):
        self._processes = []

    @classmethod
    def missing(cls):
        """What of it this machine does not have."""
        return [program for program in cls.programs if not shutil.which(program) and not os.path.exists(program)]

    def configure(self, screen):
        """Write what it reads, before anything is started."""

    def box(self, whole):
        """What of it, at the top of the screen, changes with its items only."""
        return whole

    def start(self, screen):
        """Start it on that screen; returns when it is there."""
        raise NotImplementedError

    def stop(self, screen):
        """End it, as a panel that crashes: nobody is told."""
        for process in reversed(self._processes):
            screen.end(process)
        self._processes.clear()

    def _spawn(self, screen, *command):
        self._processes.append(screen.spawn(*command))


class LxqtPanel(Panel):
    """The one of LXQt: passes left and right clicks on."""

    desktop = "LXQt"
    programs = ("lxqt-panel",)

    def start(self, screen):
        config = os.path.join(screen.home, "lxqt", "panel.conf")
        os.makedirs(os.path.dirname(config), exist_ok=True)
        with open(config, "w", encoding="ascii") as file:
            file.write(LXQT % HEIGHT)
        self._spawn(screen, "lxqt-panel", "-c", config)
        screen.wait_for_window("lxqt-panel")


class XfcePanel(Panel):
    """The one of Xfce: draws menus itself."""

    desktop = "XFCE"
    programs = ("xfce4-panel", "/usr/lib/x86_64-linux-gnu/xfce4/xfconf/xfconfd")
    plugin = "systray"

    def start(self, screen):
        folder = os.path.join(screen.home, "xfce4", "xfconf", "xfce-perchannel-xml")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "xfce4-panel.xml"), "w", encoding="ascii") as file:
            file.write(XFCE % {"height": HEIGHT, "plugin": self.plugin})
        self._spawn(screen, self.programs[1])
        self._spawn(screen, "xfce4-panel", "--disable-wm-check")
        screen.wait_for_window("Wrapper-2.0")


class Trayer(Panel):
    """A tray of the old kind, and nothing but that."""

    programs = ("trayer",)

    def start(self, screen):
        self._spawn(screen, "trayer", "--edge", "top", "--align", "right", "--widthtype", "pixel", "--width", "200",
                    "--heighttype", "pixel", "--height", str(HEIGHT), "--tint", "0xeef0f4", "--alpha", "0",
                    "--transparent", "false")
        # An empty one may hide itself.
        wait_until(screen.server.has_old_tray, 30, "the tray", 0.05)


class IndicatorPanel(XfcePanel):
    """Xfce's panel as host of indicators: its watcher is a program of its own, and text is shown beside the icon."""

    programs = (*XfcePanel.programs, "/usr/libexec/ayatana-indicator-application/ayatana-indicator-application-service",
                "/usr/lib/x86_64-linux-gnu/xfce4/panel/plugins/libindicator-plugin.so",
                "/usr/lib/x86_64-linux-gnu/ayatana-indicators3/7/libayatana-application.so")
    plugin = "indicator"

    def start(self, screen):
        self._spawn(screen, self.programs[2])
        super().start(screen)


class Waybar(Panel):
    """A bar for sway: draws menus itself."""

    desktop = "sway"
    programs = ("waybar",)

    def start(self, screen):
        folder = os.path.join(screen.home, "waybar")
        os.makedirs(folder, exist_ok=True)
        with open(os.path.join(folder, "config"), "w", encoding="ascii") as file:
            json.dump({"layer": "top", "position": "top", "height": HEIGHT, "modules-right": ["tray"],
                       "tray": {"icon-size": 22, "spacing": 4}}, file)
        with open(os.path.join(folder, "style.css"), "w", encoding="ascii") as file:
            file.write("window#waybar { background: #eef0f4; color: black; }\n")
        nothing = screen.picture(screen.panel_box)
        self._spawn(screen, "waybar")
        screen.wait_for_item(nothing)
