import Gio from 'gi://Gio';
import GLib from 'gi://GLib';

const tovel = 'org.tovel.Tovel';
// The name of the watcher and of its interface.
const watcher = 'org.kde.StatusNotifierWatcher';
const watcherPath = '/StatusNotifierWatcher';

// A watcher that is busy at its start answers late; when it goes, the bus answers for it.
const forever = 2147483647;

// Whether Tovel runs and has no tray. It asks the watcher of the trays just what Tovel asks it, so that
// both know at once who shows the icon.
export class Presence {
    // The function is called with Tovel's name on the bus while it needs an icon, and with null when
    // it does not.
    constructor(bus, callers, changed) {
        this._bus = bus;
        this._callers = callers;
        this._changed = changed;
        this._owner = null; // who is Tovel
        this._isPermitted = false;
        this._hasTray = true; // until it is known to have none
        this._shown = null;
        this._question = null; // to the watcher, while it has not answered
        this._subscriptions = ['StatusNotifierHostRegistered', 'StatusNotifierHostUnregistered'].map(
            signal => bus.signal_subscribe(watcher, watcher, signal, watcherPath, null,
                Gio.DBusSignalFlags.NONE, () => this._ask()));
        this._names = [
            Gio.bus_watch_name_on_connection(bus, tovel, Gio.BusNameWatcherFlags.NONE,
                (connection, name, owner) => this._takeOwner(owner),
                () => this._takeOwner(null)),
            Gio.bus_watch_name_on_connection(bus, watcher, Gio.BusNameWatcherFlags.NONE,
                () => this._ask(),
                () => this._takeTray(false)),
        ];
    }

    destroy() {
        this._names.forEach(name => Gio.bus_unwatch_name(name));
        this._subscriptions.forEach(subscription => this._bus.signal_unsubscribe(subscription));
        this._question?.cancel();
        this._question = null;
        this._changed = null;
    }

    _takeOwner(owner) {
        this._owner = owner;
        this._isPermitted = false;
        this._update();
        if (!owner)
            return;
        this._callers.ask(owner, process => {
            if (this._owner === owner)
                this._isPermitted = process !== 0;
            this._update();
        });
    }

    _takeTray(hasTray) {
        this._question?.cancel();
        this._question = null;
        this._hasTray = hasTray;
        this._update();
    }

    _ask() {
        this._takeTray(true);
        const question = new Gio.Cancellable();
        this._question = question;
        this._bus.call(watcher, watcherPath, 'org.freedesktop.DBus.Properties', 'Get',
            new GLib.Variant('(ss)', [watcher, 'IsStatusNotifierHostRegistered']),
            new GLib.VariantType('(v)'), Gio.DBusCallFlags.NO_AUTO_START, forever, question,
            (bus, result) => {
                let hasTray = false;
                try {
                    hasTray = bus.call_finish(result).recursiveUnpack()[0] === true;
                } catch {
                    // It has none, or is asked again.
                }
                if (this._question === question)
                    this._takeTray(hasTray);
            });
    }

    _update() {
        const shown = this._isPermitted && !this._hasTray ? this._owner : null;
        if (shown === this._shown)
            return;
        this._shown = shown;
        this._changed?.(shown);
    }
}
