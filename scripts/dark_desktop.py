#!/usr/bin/python3
"""Runs a command on a session bus whose desktop says that it is dark.

Usage: dbus-run-session dark_desktop.py COMMAND...
Answers as the desktop portal does: org.freedesktop.appearance color-scheme is 1.
"""

import subprocess
import sys
import threading

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib


class Settings(dbus.service.Object):
    @dbus.service.method("org.freedesktop.portal.Settings", in_signature="ss", out_signature="v")
    def Read(self, namespace, key):
        # A variant in the variant, as this method of the portal gives it.
        return dbus.UInt32(1, variant_level=1)


dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
bus = dbus.SessionBus()
name = dbus.service.BusName("org.freedesktop.portal.Desktop", bus)
settings = Settings(bus, "/org/freedesktop/portal/desktop")
loop = GLib.MainLoop()
status = 0


def run():
    global status
    status = subprocess.run(sys.argv[1:]).returncode
    loop.quit()


threading.Thread(target=run).start()
loop.run()
sys.exit(status)
