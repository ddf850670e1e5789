import Gio from 'gi://Gio';
import GLib from 'gi://GLib';

import {menuItems} from './menu_items.js';

const itemPath = '/StatusNotifierItem';
const itemInterface = 'org.kde.StatusNotifierItem';
const menuInterface = 'com.canonical.dbusmenu';
const patience = 2000; // ms, for a program that should answer at once

// Tovel's icon and menu on the bus, as trays use them: org.kde.StatusNotifierItem of the
// freedesktop.org StatusNotifierItem specification, and com.canonical.dbusmenu.
export class ItemClient {
    constructor(bus, owner) {
        this._bus = bus;
        this._owner = owner;
        this._menuPath = null;
        this._loading = null;
    }

    destroy() {
        this._loading?.cancel();
        this._loading = null;
    }

    activate(x, y) {
        this._tell(itemPath, itemInterface, 'Activate', new GLib.Variant('(ii)', [x, y]));
    }

    // Calls the function with the items of the menu as it is now, unless it is not to be had, or asked
    // for again meanwhile.
    load(take) {
        this.destroy();
        const loading = new Gio.Cancellable();
        this._loading = loading;
        this._read(loading, take).catch(error => {
            if (!loading.is_cancelled())
                console.warn(`Tovel's menu cannot be read: ${error.message}`);
        });
    }

    // Of the menu itself, or of an item: "opened", "closed" or "clicked".
    tell(id, event, time) {
        if (this._menuPath) {
            this._tell(this._menuPath, menuInterface, 'Event',
                new GLib.Variant('(isvu)', [id, event, new GLib.Variant('i', 0), time]));
        }
    }

    async _read(loading, take) {
        const [path] = await this._ask(loading, itemPath, 'org.freedesktop.DBus.Properties', 'Get',
            new GLib.Variant('(ss)', [itemInterface, 'Menu']), '(v)');
        const menu = path.get_variant();
        if (menu.get_type_string() !== 'o')
            throw new Error('its place is none');
        this._menuPath = menu.unpack();
        await this._ask(loading, this._menuPath, menuInterface, 'AboutToShow',
            new GLib.Variant('(i)', [0]), '(b)');
        const [, layout] = await this._ask(loading, this._menuPath, menuInterface, 'GetLayout',
            new GLib.Variant('(iias)', [0, -1, []]), '(u(ia{sv}av))');
        if (!loading.is_cancelled())
            take(menuItems(layout));
    }

    // The values of the answer.
    _ask(loading, path, face, method, values, type) {
        return new Promise((resolve, reject) => {
            this._bus.call(this._owner, path, face, method, values, new GLib.VariantType(type),
                Gio.DBusCallFlags.NO_AUTO_START, patience, loading, (bus, result) => {
                    try {
                        const answer = bus.call_finish(result);
                        resolve([...Array(answer.n_children()).keys()].map(
                            index => answer.get_child_value(index)));
                    } catch (error) {
                        reject(error);
                    }
                });
        });
    }

    // Without waiting for an answer.
    _tell(path, face, method, values) {
        this._bus.call(this._owner, path, face, method, values, null,
            Gio.DBusCallFlags.NO_AUTO_START, patience, null, null);
    }
}
