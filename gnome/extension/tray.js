import Gio from 'gi://Gio';

import * as Main from 'resource:///org/gnome/shell/ui/main.js';

import {Indicator} from './indicator.js';
import {ItemClient} from './item_client.js';
import {Presence} from './presence.js';

const role = 'tovel';
const wholeMenu = 0;

// Tovel's icon in the top bar, while Tovel runs and no other tray has it.
export class Tray {
    constructor(bus, callers, iconPath) {
        this._bus = bus;
        this._icon = Gio.icon_new_for_string(iconPath);
        this._item = null;
        this._indicator = null;
        this._isOpen = false;
        this._presence = new Presence(bus, callers, owner => this._show(owner));
    }

    destroy() {
        this._presence.destroy();
        this._show(null);
    }

    _show(owner) {
        this._closed();
        this._indicator?.destroy();
        this._indicator = null;
        this._item?.destroy();
        this._item = null;
        if (!owner)
            return;
        this._item = new ItemClient(this._bus, owner);
        this._indicator = new Indicator(this._icon, {
            activate: (x, y) => this._item.activate(x, y),
            wantMenu: () => this._item.load(items => this._open(items)),
            choose: id => this._item.tell(id, 'clicked', global.get_current_time()),
            menuClosed: () => this._closed(),
        });
        Main.panel.addToStatusArea(role, this._indicator);
    }

    _open(items) {
        this._item.tell(wholeMenu, 'opened', global.get_current_time());
        this._isOpen = true;
        this._indicator.showMenu(items);
        if (!this._indicator.menu.isOpen)
            this._closed();
    }

    // Tovel keeps its menu as it is while it is open.
    _closed() {
        if (this._isOpen)
            this._item.tell(wholeMenu, 'closed', global.get_current_time());
        this._isOpen = false;
    }
}
