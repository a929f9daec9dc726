#!/usr/bin/python3
"""A fake of the system's Bluetooth service, for playing real loggers without a radio.

    fakebluez.py BUS [--world FILE] [--page-timeout SECONDS]

takes the name org.bluez on the bus at the address BUS (unix:path=...), waiting up to 10 s for it to stand, prints
"ready" and serves until it is ended. SIGTERM ends it as the service ends (profiles are released, links go), SIGKILL
as it dies (links stay, since their far ends are held elsewhere); SIGSTOP freezes it. A second start gives the service
back, with what FILE says:

    {"adapters": [{"name": "hci0", "powered": true}],
     "devices": [{"adapter": "hci0", "address": "00:12:F3:00:00:01", "name": "Tembrin_0421", "paired": true,
                  "socket": "/run/class/Tembrin_0421"}]}

It keeps the rules of BlueZ 5.66 as far as a client of a serial port profile meets them: ObjectManager, Adapter1,
Device1, ProfileManager1 and calls to Profile1, with their signals, refusals and error names. A link leads to the UNIX
stream socket of the device: its near end goes to the client of the profile, and a duplicate stays open here, so that
only shutdown() ends it. A device with an empty socket path sends back what it gets. An adapter calls one device at a
time and carries seven links; a device whose socket is not there does not answer its call.

Tests control it by the interface org.pellandra.Fake on /org/pellandra/fake, same bus name:

    AddAdapter(s name, b powered), RemoveAdapter(s name), SetPowered(s name, b powered)
    AddDevice(s adapter, s address, s name, b paired, s socket), SetPaired(s address, b paired), RemoveDevice(s address)
        An address may be known to several adapters; then all of these devices are meant.
    Behave(s address, s what, d seconds, s errorName, s errorMessage)
        How connects end from now on, after the device was called for `seconds`. An empty name or message stands for
        the service's own. `what` is one of
            link         NewConnection, and when the client has answered it, the reply (as it is at first, 0 s)
            reply-first  the reply at once, NewConnection after `seconds`
            bare         the reply without NewConnection, as when another program has the link
            busy         "in progress" while its adapter calls another device, else link
            away         the call gets no answer (`seconds` 0: for the page time-out)
            refuse       the device refuses us: the keys of the pairing do not fit
            error        the error that is named
            silent       no answer at all
    DropLink(s address)          the radio loses it, or the other program gives it back
    TakeLink(s address)          another program has it
    AskToDisconnect(s address)   RequestDisconnection, then its end
    ReleaseProfiles()            Release to all clients
    State() -> s                 JSON: profiles; of each adapter powered, links, calling; of each address the number of
                                 connects so far
"""

import argparse
import collections
import json
import os
import signal
import socket
import sys
import time

import dbus
import dbus.mainloop.glib
import dbus.service
from gi.repository import GLib

PROPERTIES = "org.freedesktop.DBus.Properties"
MANAGER = "org.freedesktop.DBus.ObjectManager"
ADAPTER = "org.bluez.Adapter1"
DEVICE = "org.bluez.Device1"
PROFILES = "org.bluez.ProfileManager1"
PROFILE = "org.bluez.Profile1"
FAKE = "org.pellandra.Fake"

SERIAL_PORT = "00001101-0000-1000-8000-00805f9b34fb"
MOST_LINKS = 7  # active slaves of a piconet
BEHAVIOURS = ("link", "reply-first", "bare", "busy", "away", "refuse", "error", "silent")
PAGE_TIMEOUT = ("Failed", "br-connection-page-timeout")
CANCELED = ("Failed", "br-connection-canceled")
REFUSED = ("Failed", "br-connection-refused")
LIMIT = ("Failed", "br-connection-concurrent-connection-limit")
BUSY = ("InProgress", "br-connection-busy")
UNAVAILABLE = ("NotAvailable", "br-connection-profile-unavailable")
NOT_POWERED = ("NotReady", "br-connection-adapter-not-powered")


def error(name, message):
    full = name if "." in name else "org.bluez.Error." + name
    return dbus.exceptions.DBusException(message, name=full)


class Thing(dbus.service.Object):
    """An object of the service with the properties of its one interface."""

    interface = ""

    def __init__(self, service, path, properties):
        super().__init__(service.bus, path)
        self.service = service
        self.path = dbus.ObjectPath(path)
        self.properties = properties

    def interfaces(self):
        return dbus.Dictionary({self.interface: dbus.Dictionary(self.properties, signature="sv")}, signature="sa{sv}")

    def change(self, name, value):
        if self.properties[name] != value:
            self.properties[name] = value
            self.PropertiesChanged(self.interface, {name: value}, [])

    @dbus.service.method(PROPERTIES, "ss", "v")
    def Get(self, interface, name):
        if interface != self.interface or name not in self.properties:
            raise error("org.freedesktop.DBus.Error.InvalidArgs", "No such property '%s'" % name)
        return self.properties[name]

    @dbus.service.method(PROPERTIES, "s", "a{sv}")
    def GetAll(self, interface):
        return dbus.Dictionary(self.properties if interface == self.interface else {}, signature="sv")

    @dbus.service.signal(PROPERTIES, "sa{sv}as")
    def PropertiesChanged(self, interface, changed, invalidated):
        pass


class Adapter(Thing):
    """It calls ("pages") one device after the other; the connects behind the first wait in `queue`."""

    interface = ADAPTER

    def __init__(self, service, name, powered):
        super().__init__(service, "/org/bluez/" + name, {
            "Address": "00:1A:7D:DA:71:%02X" % (len(service.adapters) + 1),
            "AddressType": "public", "Name": name, "Alias": name, "Class": dbus.UInt32(0x10C),
            "Powered": dbus.Boolean(powered), "Discoverable": False, "Pairable": True, "Discovering": False,
            "UUIDs": dbus.Array([SERIAL_PORT], signature="s")})
        self.queue = []
        self.calling = None
        self.timer = 0

    def devices(self):
        return [device for device in self.service.devices if device.adapter is self]

    def links(self):
        return [device for device in self.devices() if device.isLinked()]

    def call(self, connect):
        self.queue.append(connect)
        self.callNext()

    def callNext(self):
        if self.calling or not self.queue:
            return
        self.calling = self.queue.pop(0)
        seconds = self.calling.beginCall()
        self.timer = GLib.timeout_add(int(seconds * 1000), self.endCall) if seconds > 0 else 0
        if not self.timer:
            self.endCall()

    def endCall(self):
        self.timer = 0
        connect, self.calling = self.calling, None
        connect.endCall()
        self.callNext()
        return False

    def forget(self, connect):
        if connect in self.queue:
            self.queue.remove(connect)
        if connect is self.calling:
            if self.timer:
                GLib.source_remove(self.timer)
            self.timer, self.calling = 0, None
            self.callNext()

    def setPowered(self, powered):
        self.change("Powered", dbus.Boolean(powered))
        for device in [] if powered else self.devices():
            device.endAll(NOT_POWERED)

    @dbus.service.method(PROPERTIES, "ssv", "")
    def Set(self, interface, name, value):
        if (interface, name) != (ADAPTER, "Powered"):
            raise error("org.freedesktop.DBus.Error.PropertyReadOnly", "Property '%s' is not writable" % name)
        self.setPowered(bool(value))


class Connect:
    """A call of ConnectProfile that has no answer yet."""

    def __init__(self, device, profile, reply, fail):
        self.device = device
        self.profile = profile
        self.reply = reply
        self.fail = fail

    def beginCall(self):
        """How long the device is called; the answer is looked at when that is over."""
        device = self.device
        self.what, self.seconds, self.error = device.behaviour
        if self.what in ("link", "busy") and len(device.adapter.links()) >= MOST_LINKS:
            self.what, self.error = "error", LIMIT
            return 0
        if self.what in ("link", "busy", "reply-first") and device.socket and not os.path.exists(device.socket):
            self.what, self.seconds = "away", 0
        if self.what == "away":
            self.error = PAGE_TIMEOUT if self.seconds == 0 else self.error
            return self.seconds or device.service.pageTimeout
        return 0 if self.what == "reply-first" else self.seconds

    def endCall(self):
        if self.what in ("error", "away", "refuse"):
            self.refuse(self.error)
        elif self.what == "bare":
            self.succeed()
        elif self.what == "reply-first":
            self.succeed()
            GLib.timeout_add(int(self.seconds * 1000), self.device.link, self.profile, None)
        else:
            self.device.link(self.profile, self)

    def succeed(self):
        self.end()
        self.reply()

    def refuse(self, reason):
        if self.device.connecting is self:
            self.end()
            self.fail(error(*reason))

    def end(self):
        self.device.connecting = None
        self.device.adapter.forget(self)


class Device(Thing):
    interface = DEVICE

    def __init__(self, service, adapter, address, name, paired, far):
        super().__init__(service, "%s/dev_%s" % (adapter.path, address.replace(":", "_")), {
            "Address": address, "AddressType": "public", "Name": name, "Alias": name,
            "Class": dbus.UInt32(0x1F00), "Icon": "unknown", "Paired": dbus.Boolean(paired), "Trusted": False,
            "Blocked": False, "LegacyPairing": True, "Connected": dbus.Boolean(False), "ServicesResolved": False,
            "Adapter": adapter.path, "UUIDs": dbus.Array([SERIAL_PORT], signature="s")})
        self.adapter = adapter
        self.address = address
        self.socket = far
        self.behaviour = ("link", 0, PAGE_TIMEOUT)
        self.connecting = None  # the Connect that has no answer yet
        self.near = None        # our duplicate of the near end
        self.profile = None     # whose link it is
        self.watch = 0
        self.isTaken = False    # by another program

    def isLinked(self):
        return self.near is not None or self.isTaken

    def behave(self, what, seconds, name, message):
        usual = {"away": PAGE_TIMEOUT, "refuse": REFUSED}.get(what, ("Failed", "br-connection-unknown"))
        self.behaviour = (what, seconds, (name or usual[0], message or usual[1]))

    @dbus.service.method(DEVICE, "s", "", async_callbacks=("reply", "fail"))
    def ConnectProfile(self, uuid, reply, fail):
        self.service.connects[self.address] += 1
        profile = self.service.profileFor(uuid)
        what = self.behaviour[0]
        if self.connecting or (what == "busy" and self.adapter.calling):
            return fail(error(*BUSY))
        if not self.adapter.properties["Powered"]:
            return fail(error(*NOT_POWERED))
        if not profile or uuid.lower() not in self.properties["UUIDs"]:
            return fail(error(*UNAVAILABLE))
        if self.isLinked():  # whoever has the link, the service calls that a success
            return reply()
        self.connecting = Connect(self, profile, reply, fail)
        if what != "silent":
            self.adapter.call(self.connecting)

    @dbus.service.method(DEVICE, "", "", async_callbacks=("reply", "fail"))
    def Connect(self, reply, fail):
        self.ConnectProfile(SERIAL_PORT, reply, fail)

    @dbus.service.method(DEVICE, "s", "", async_callbacks=("reply", "fail"))
    def DisconnectProfile(self, uuid, reply, fail):
        if self.connecting:
            self.connecting.refuse(CANCELED)
            reply()
        elif self.near is None:
            fail(error("NotConnected", "Not Connected"))
        else:
            self.askToDisconnect(reply)

    @dbus.service.method(DEVICE, "", "", async_callbacks=("reply", "fail"))
    def Disconnect(self, reply, fail):
        if self.connecting or self.isLinked():
            self.endAll(CANCELED)
            reply()
        else:
            fail(error("NotConnected", "Not Connected"))

    def link(self, profile, connect):
        """Hands the link to the client; `connect` is answered when the client has taken it."""
        try:
            near = self.openNear()
        except OSError:
            if connect:
                connect.refuse(PAGE_TIMEOUT)
            return
        self.near, self.profile = near, profile
        self.watch = GLib.io_add_watch(near.fileno(), GLib.PRIORITY_DEFAULT, GLib.IO_HUP | GLib.IO_ERR, self.hungUp)
        self.change("Connected", dbus.Boolean(True))

        def taken(*_):
            if connect and self.connecting is connect:
                connect.succeed()

        def declined(_):
            if self.near is near:
                self.drop()
            if connect:
                connect.refuse(REFUSED)

        profile.call("NewConnection", "oha{sv}", (self.path, dbus.types.UnixFd(near.fileno()), {}), taken, declined)

    def openNear(self):
        if self.socket:
            near = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
            near.setblocking(False)
            try:
                near.connect(self.socket)
            except OSError:
                near.close()
                raise
            return near
        near, far = socket.socketpair()
        near.setblocking(False)
        GLib.io_add_watch(far.fileno(), GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, self.echo, far)
        return near

    @staticmethod
    def echo(_fd, _condition, far):
        try:
            data = far.recv(4096)
            far.sendall(data)
        except OSError:
            data = b""
        if not data:
            far.close()
        return bool(data)

    def hungUp(self, *_):
        self.watch = 0
        self.drop()
        return False

    def drop(self):
        """The end of the link, wherever it came from."""
        if self.watch:
            GLib.source_remove(self.watch)
        if self.near:
            try:
                self.near.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass  # its far end has gone
            self.near.close()
        self.near, self.profile, self.watch, self.isTaken = None, None, 0, False
        self.change("Connected", dbus.Boolean(False))

    def endAll(self, reason):
        if self.connecting:
            self.connecting.refuse(reason)
        self.drop()

    def take(self):
        self.drop()
        self.isTaken = True
        self.change("Connected", dbus.Boolean(True))

    def askToDisconnect(self, reply):
        near = self.near

        def end(*_):
            if self.near is near:
                self.drop()
            reply()

        self.profile.call("RequestDisconnection", "o", (self.path,), end, end)


class Profile:
    def __init__(self, service, sender, path, uuid, options):
        self.bus = service.bus
        self.sender = sender
        self.path = path
        self.uuid = uuid
        self.service = str(options.get("Service", uuid)).lower()
        self.name = str(options.get("Name", ""))
        self.role = str(options.get("Role", ""))

    def call(self, method, signature, arguments, reply=lambda *_: None, fail=lambda _: None):
        self.bus.call_async(self.sender, self.path, PROFILE, method, signature, arguments, reply, fail)

    def state(self):
        return {name: getattr(self, name) for name in ("sender", "path", "uuid", "service", "name", "role")}


class ProfileManager(dbus.service.Object):
    def __init__(self, service):
        super().__init__(service.bus, "/org/bluez")
        self.service = service

    @dbus.service.method(PROFILES, "osa{sv}", "", sender_keyword="sender")
    def RegisterProfile(self, path, uuid, options, sender):
        uuid = str(uuid).lower()
        for profile in self.service.profiles:
            if (profile.sender, profile.path) == (sender, path):
                raise error("AlreadyExists", "Already Exists")
            if profile.uuid == uuid:
                raise error("NotPermitted", "UUID already registered")
        self.service.profiles.append(Profile(self.service, str(sender), str(path), uuid, options))

    @dbus.service.method(PROFILES, "o", "", sender_keyword="sender")
    def UnregisterProfile(self, path, sender):
        for profile in self.service.profiles:
            if (profile.sender, profile.path) == (sender, path):
                return self.service.removeProfile(profile)
        raise error("DoesNotExist", "Does Not Exist")


class ObjectManager(dbus.service.Object):
    def __init__(self, service):
        super().__init__(service.bus, "/")
        self.service = service

    @dbus.service.method(MANAGER, "", "a{oa{sa{sv}}}")
    def GetManagedObjects(self):
        return {thing.path: thing.interfaces() for thing in self.service.things()}

    @dbus.service.signal(MANAGER, "oa{sa{sv}}")
    def InterfacesAdded(self, path, interfaces):
        pass

    @dbus.service.signal(MANAGER, "oas")
    def InterfacesRemoved(self, path, interfaces):
        pass


class Service:
    def __init__(self, bus, pageTimeout):
        self.bus = bus
        self.pageTimeout = pageTimeout
        self.adapters = []
        self.devices = []
        self.profiles = []
        self.connects = collections.Counter()
        self.manager = ObjectManager(self)
        self.profileManager = ProfileManager(self)
        bus.add_signal_receiver(self.ownerChanged, "NameOwnerChanged", "org.freedesktop.DBus")

    def things(self):
        return self.adapters + self.devices

    def add(self, things, thing):
        things.append(thing)
        self.manager.InterfacesAdded(thing.path, thing.interfaces())

    def remove(self, things, thing):
        things.remove(thing)
        thing.remove_from_connection()
        self.manager.InterfacesRemoved(thing.path, [thing.interface])

    def adapter(self, name):
        for adapter in self.adapters:
            if adapter.path == "/org/bluez/" + name:
                return adapter
        raise error("DoesNotExist", "no adapter " + name)

    def devicesAt(self, address):
        devices = [device for device in self.devices if device.address == address]
        if not devices:
            raise error("DoesNotExist", "no device " + address)
        return devices

    def removeDevice(self, device):
        device.endAll(CANCELED)
        self.remove(self.devices, device)

    def profileFor(self, uuid):
        """The first that serves it, whoever asks: so it is."""
        return next((profile for profile in self.profiles if profile.service == uuid.lower()), None)

    def removeProfile(self, profile):
        self.profiles.remove(profile)
        for device in self.devices:
            if device.connecting and device.connecting.profile is profile:
                device.connecting.refuse(CANCELED)
            if device.profile is profile:
                device.drop()

    def ownerChanged(self, name, _old, new):
        for profile in [] if new else [profile for profile in self.profiles if profile.sender == name]:
            self.removeProfile(profile)

    def releaseProfiles(self):
        for profile in list(self.profiles):
            profile.call("Release", "", ())
            self.removeProfile(profile)


class Fake(dbus.service.Object):
    """The control for tests; see the top of the file."""

    def __init__(self, service):
        super().__init__(service.bus, "/org/pellandra/fake")
        self.service = service

    @dbus.service.method(FAKE, "sb", "")
    def AddAdapter(self, name, powered):
        self.service.add(self.service.adapters, Adapter(self.service, str(name), powered))

    @dbus.service.method(FAKE, "s", "")
    def RemoveAdapter(self, name):
        adapter = self.service.adapter(name)
        for device in adapter.devices():
            self.service.removeDevice(device)
        self.service.remove(self.service.adapters, adapter)

    @dbus.service.method(FAKE, "sb", "")
    def SetPowered(self, name, powered):
        self.service.adapter(name).setPowered(powered)

    @dbus.service.method(FAKE, "sssbs", "")
    def AddDevice(self, adapter, address, name, paired, far):
        device = Device(self.service, self.service.adapter(adapter), str(address), str(name), paired, str(far))
        self.service.add(self.service.devices, device)

    @dbus.service.method(FAKE, "sb", "")
    def SetPaired(self, address, paired):
        for device in self.service.devicesAt(address):
            device.change("Paired", dbus.Boolean(paired))

    @dbus.service.method(FAKE, "s", "")
    def RemoveDevice(self, address):
        for device in self.service.devicesAt(address):
            self.service.removeDevice(device)

    @dbus.service.method(FAKE, "ssdss", "")
    def Behave(self, address, what, seconds, name, message):
        if what not in BEHAVIOURS:
            raise error("InvalidArguments", "%s is none of %s" % (what, ", ".join(BEHAVIOURS)))
        for device in self.service.devicesAt(address):
            device.behave(str(what), float(seconds), str(name), str(message))

    @dbus.service.method(FAKE, "s", "")
    def DropLink(self, address):
        for device in self.service.devicesAt(address):
            device.drop()

    @dbus.service.method(FAKE, "s", "")
    def TakeLink(self, address):
        self.service.devicesAt(address)[0].take()

    @dbus.service.method(FAKE, "s", "")
    def AskToDisconnect(self, address):
        for device in self.service.devicesAt(address):
            if device.profile:
                device.askToDisconnect(lambda: None)

    @dbus.service.method(FAKE, "", "")
    def ReleaseProfiles(self):
        self.service.releaseProfiles()

    @dbus.service.method(FAKE, "", "s")
    def State(self):
        return json.dumps({
            "profiles": [profile.state() for profile in self.service.profiles],
            "adapters": {str(adapter.properties["Name"]): {
                "powered": bool(adapter.properties["Powered"]),
                "links": [device.address for device in adapter.links()],
                "calling": adapter.calling.device.address if adapter.calling else ""}
                for adapter in self.service.adapters},
            "connects": self.service.connects})


def connectToBus(address):
    for _ in range(100):
        try:
            return dbus.bus.BusConnection(address)
        except dbus.exceptions.DBusException as failure:
            reason = failure
            time.sleep(0.1)
    sys.exit("fakebluez: no bus at %s: %s" % (address, reason))


def main():
    parser = argparse.ArgumentParser(description="A fake of the system's Bluetooth service.")
    parser.add_argument("bus")
    parser.add_argument("--world", metavar="FILE")
    parser.add_argument("--page-timeout", type=float, default=2, metavar="SECONDS")
    options = parser.parse_args()
    dbus.mainloop.glib.DBusGMainLoop(set_as_default=True)
    bus = connectToBus(options.bus)
    loop = GLib.MainLoop()
    bus.set_exit_on_disconnect(False)
    bus.call_on_disconnection(lambda _: loop.quit())
    service = Service(bus, options.page_timeout)
    fake = Fake(service)
    world = {}
    if options.world:
        with open(options.world, encoding="utf-8") as file:
            world = json.load(file)
    for adapter in world.get("adapters", []):
        fake.AddAdapter(adapter["name"], adapter["powered"])
    for device in world.get("devices", []):
        fake.AddDevice(*[device[key] for key in ("adapter", "address", "name", "paired", "socket")])
    try:
        name = dbus.service.BusName("org.bluez", bus, do_not_queue=True)
    except dbus.exceptions.NameExistsException:
        sys.exit("fakebluez: another service has the name org.bluez")

    def end():
        service.releaseProfiles()
        bus.flush()
        loop.quit()

    for number in (signal.SIGTERM, signal.SIGINT):
        GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, number, end)
    print("ready", flush=True)
    loop.run()
    del name


if __name__ == "__main__":
    main()
