#!/usr/bin/python3
"""A stand-in for ModemManager on a private bus, driven line by line from stdin.

It serves org.freedesktop.ModemManager1 with the objects the player reads:
the object manager at /org/freedesktop/ModemManager1, one modem at
.../Modem/0 with the interface ...Modem.Voice (property Calls, signals
CallAdded and CallDeleted, method ListCalls), and calls at .../Call/<n> with
the interface ...Call (property State, signal StateChanged). Property changes
are signalled with PropertiesChanged, as the service does.

Commands (each answered by "ok" on stdout once done):
  own             take the name and export the objects
  add N STATE     a new call N in STATE
  state N STATE   call N changes to STATE
  delete N        call N goes away
  vanish          give up the name and the objects
  quit
The bus is the one at $DBUS_SYSTEM_BUS_ADDRESS.
"""
import os
import sys

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

SERVICE = "org.freedesktop.ModemManager1"
ROOT = "/org/freedesktop/ModemManager1"
MODEM = ROOT + "/Modem/0"
VOICE = "org.freedesktop.ModemManager1.Modem.Voice"
CALL = "org.freedesktop.ModemManager1.Call"
PROPS = "org.freedesktop.DBus.Properties"
MANAGER = "org.freedesktop.DBus.ObjectManager"


class PropertiesObject(dbus.service.Object):
    interface = ""

    def props(self):
        return {}

    @dbus.service.method(PROPS, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        if interface != self.interface or name not in self.props():
            raise dbus.exceptions.DBusException("no such property",
                                                name="org.freedesktop.DBus.Error.InvalidArgs")
        return self.props()[name]

    @dbus.service.method(PROPS, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return self.props() if interface == self.interface else {}

    @dbus.service.signal(PROPS, signature="sa{sv}as")
    def PropertiesChanged(self, interface, changed, invalidated):
        pass


class Call(PropertiesObject):
    interface = CALL

    def __init__(self, bus, path, state):
        super().__init__(bus, path)
        self.path = path
        self.state = state

    def props(self):
        return {"State": dbus.Int32(self.state), "Direction": dbus.Int32(1),
                "Number": dbus.String("+4790000000")}

    def set_state(self, state):
        old, self.state = self.state, state
        self.StateChanged(old, state, 0)
        self.PropertiesChanged(CALL, {"State": dbus.Int32(state)}, [])

    @dbus.service.signal(CALL, signature="iiu")
    def StateChanged(self, old, new, reason):
        pass


class Modem(PropertiesObject):
    interface = VOICE

    def __init__(self, bus):
        super().__init__(bus, MODEM)
        self.calls = {}

    def props(self):
        return {"Calls": dbus.Array([dbus.ObjectPath(c.path) for c in self.calls.values()], signature="o"),
                "EmergencyOnly": dbus.Boolean(False)}

    @dbus.service.method(VOICE, out_signature="ao")
    def ListCalls(self):
        return self.props()["Calls"]

    @dbus.service.signal(VOICE, signature="o")
    def CallAdded(self, path):
        pass

    @dbus.service.signal(VOICE, signature="o")
    def CallDeleted(self, path):
        pass

    def calls_changed(self):
        self.PropertiesChanged(VOICE, {"Calls": self.props()["Calls"]}, [])


class Manager(dbus.service.Object):
    def __init__(self, bus, modem):
        super().__init__(bus, ROOT)
        self.modem = modem

    @dbus.service.method(MANAGER, out_signature="a{oa{sa{sv}}}")
    def GetManagedObjects(self):
        return {dbus.ObjectPath(MODEM): {VOICE: self.modem.props()}}


class StandIn:
    def __init__(self, bus):
        self.bus = bus
        self.name = None
        self.modem = None
        self.manager = None

    def own(self):
        self.modem = Modem(self.bus)
        self.manager = Manager(self.bus, self.modem)
        self.name = dbus.service.BusName(SERVICE, self.bus, do_not_queue=True)

    def add(self, number, state):
        path = "%s/Call/%s" % (ROOT, number)
        self.modem.calls[number] = Call(self.bus, path, int(state))
        self.modem.CallAdded(dbus.ObjectPath(path))
        self.modem.calls_changed()

    def state(self, number, state):
        self.modem.calls[number].set_state(int(state))

    def delete(self, number):
        call = self.modem.calls.pop(number)
        call.remove_from_connection()
        self.modem.CallDeleted(dbus.ObjectPath(call.path))
        self.modem.calls_changed()

    def vanish(self):
        for call in self.modem.calls.values():
            call.remove_from_connection()
        self.modem.remove_from_connection()
        self.manager.remove_from_connection()
        self.bus.release_name(SERVICE)
        self.name = None


def main():
    DBusGMainLoop(set_as_default=True)
    bus = dbus.SystemBus()
    stand_in = StandIn(bus)
    loop = GLib.MainLoop()

    pending = bytearray()

    def on_input(source, condition):
        data = os.read(sys.stdin.fileno(), 4096)
        if not data:
            loop.quit()
            return False
        pending.extend(data)
        while b"\n" in pending:
            line, _, rest = bytes(pending).partition(b"\n")
            pending[:] = rest
            words = line.decode().split()
            if not words:
                continue
            if words[0] == "quit":
                loop.quit()
                return False
            try:
                getattr(stand_in, words[0])(*words[1:])
                print("ok", flush=True)
            except Exception as error:  # a bad command is reported, not fatal
                print("error %s" % error, flush=True)
        return True

    GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, on_input)
    print("ready", flush=True)
    loop.run()


if __name__ == "__main__":
    main()
