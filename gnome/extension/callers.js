import Gio from 'gi://Gio';
import GLib from 'gi://GLib';

import {denied, disabled} from './failure.js';
import {isPermitted} from './permission.js';

const busName = 'org.freedesktop.DBus';
const busPath = '/org/freedesktop/DBus';

// Of /proc, "" for a process that is gone, or of another user.
function linkOf(process, name) {
    try {
        return GLib.file_read_link(`/proc/${process}/${name}`);
    } catch {
        return '';
    }
}

// In a sandbox or a container any file can be at a program's path.
function seesTheSameFiles(process) {
    const space = linkOf(process, 'ns/mnt');
    return space !== '' && space === linkOf('self', 'ns/mnt');
}

// The clients on the bus, and whether they may ask. What was found out is kept until a client leaves.
export class Callers {
    // The function is called with the name of a client that has left.
    constructor(bus, programs, left) {
        this._bus = bus;
        this._programs = programs;
        this._left = left;
        this._callers = new Map();
        this._cancellable = new Gio.Cancellable();
    }

    destroy() {
        this._cancellable.cancel();
        for (const name of [...this._callers.keys()])
            this._forget(name, disabled());
    }

    // Calls the function with the client's process, or with 0 and why it may not ask: at once where
    // the client is known.
    ask(name, answer) {
        let caller = this._callers.get(name);
        if (!caller) {
            caller = {process: 0, failure: null, waiting: [], subscription: 0};
            this._callers.set(name, caller);
            this._find(name, caller);
        }
        if (caller.waiting)
            caller.waiting.push(answer);
        else
            answer(caller.process, caller.failure);
    }

    _find(name, caller) {
        caller.subscription = this._bus.signal_subscribe(busName, busName, 'NameOwnerChanged',
            busPath, name, Gio.DBusSignalFlags.NONE, () => {
                this._forget(name, denied());
                this._left(name);
            });
        this._bus.call(busName, busPath, busName, 'GetConnectionUnixProcessID',
            new GLib.Variant('(s)', [name]), new GLib.VariantType('(u)'), Gio.DBusCallFlags.NONE, -1,
            this._cancellable, (bus, result) => {
                let process = 0;
                try {
                    [process] = bus.call_finish(result).deepUnpack();
                } catch {
                    // The client has left, or the extension is off.
                }
                if (this._callers.get(name) === caller)
                    this._take(name, caller, process);
            });
    }

    _take(name, caller, process) {
        if (process === 0) {
            this._forget(name, denied());
            return;
        }
        const may = isPermitted(linkOf(process, 'exe'), this._programs) && seesTheSameFiles(process);
        caller.process = may ? process : 0;
        caller.failure = may ? null : denied();
        const {waiting} = caller;
        caller.waiting = null;
        for (const answer of waiting)
            answer(caller.process, caller.failure);
    }

    _forget(name, failure) {
        const caller = this._callers.get(name);
        this._callers.delete(name);
        this._bus.signal_unsubscribe(caller.subscription);
        for (const answer of caller.waiting ?? [])
            answer(0, failure);
    }
}
