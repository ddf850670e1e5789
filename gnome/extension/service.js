import Gio from 'gi://Gio';
import GLib from 'gi://GLib';

import * as Config from 'resource:///org/gnome/shell/misc/config.js';

import {Failure} from './failure.js';

const name = 'org.tovel.Shell1';
const path = '/org/tovel/Shell1';
const version = 1;

// org.tovel.Shell1 on the session's bus.
export class Service {
    // The interface as introspection data, and whom and what it leads to.
    constructor(bus, description, callers, session, grabs) {
        this._bus = bus;
        this._callers = callers;
        this._session = session;
        this._grabs = grabs;
        const information = Gio.DBusNodeInfo.new_for_xml(description).lookup_interface(name);
        this._object = Gio.DBusExportedObject.wrapJSObject(information, this._methods());
        this._object.export(bus, path);
        this._owned = Gio.bus_own_name_on_connection(bus, name, Gio.BusNameOwnerFlags.NONE, null, null);
    }

    destroy() {
        Gio.bus_unown_name(this._owned);
        this._object.unexport();
    }

    tellChange() {
        this._bus.emit_signal(null, path, name, 'Changed', null);
    }

    tellKey(client, position, modifiers) {
        this._bus.emit_signal(client, path, name, 'KeyPressed',
            new GLib.Variant('(uu)', [position, modifiers]));
    }

    // What each method does with the caller and the arguments.
    _requests() {
        const session = this._session;
        const grabs = this._grabs;
        return {
            Snapshot: (caller, known) => session.snapshot(known),
            MoveWindow: (caller, window, workspace) => session.moveWindow(window, workspace),
            ShowWorkspace: (caller, workspace) => session.showWorkspace(workspace),
            ActivateWindow: (caller, window) => session.activateWindow(window),
            RaiseWindow: (caller, window) => session.raiseWindow(window),
            SetOnAllWorkspaces: ({process}, window, on) =>
                session.setOnAllWorkspaces(process, window, on),
            SetAbove: ({process}, window, on) => session.setAbove(process, window, on),
            PlaceWindow: ({process}, window, x, y) => session.placeWindow(process, window, x, y),
            CursorPosition: () => session.cursorPosition(),
            MoveCursor: (caller, x, y) => session.moveCursor(x, y),
            GrabKey: ({client}, position, modifiers) =>
                [grabs.take(client, position, modifiers)],
            ReleaseKey: ({client}, position, modifiers) => grabs.give(client, position, modifiers),
        };
    }

    _methods() {
        const methods = {Version: version, ShellVersion: Config.PACKAGE_VERSION};
        for (const [method, request] of Object.entries(this._requests())) {
            methods[`${method}Async`] = (values, invocation) => {
                const client = invocation.get_sender();
                this._callers.ask(client, (process, failure) =>
                    this._answer(invocation, () => {
                        if (failure)
                            throw failure;
                        return request({client, process}, ...values);
                    }));
            };
        }
        return methods;
    }

    _answer(invocation, request) {
        try {
            const values = request();
            const types = invocation.get_method_info().out_args.map(({signature}) => signature);
            invocation.return_value(values ? new GLib.Variant(`(${types.join('')})`, values) : null);
        } catch (error) {
            if (!(error instanceof Failure))
                console.error(error);
            invocation.return_dbus_error(error.error ?? 'org.freedesktop.DBus.Error.Failed',
                error.message);
        }
    }
}
