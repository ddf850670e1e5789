import Clutter from 'gi://Clutter';
import GLib from 'gi://GLib';
import GObject from 'gi://GObject';
import St from 'gi://St';

import * as PanelMenu from 'resource:///org/gnome/shell/ui/panelMenu.js';
import * as PopupMenu from 'resource:///org/gnome/shell/ui/popupMenu.js';

const longPress = 500; // ms

const primaryButton = 1;
const secondaryButton = 3;

function isMenuKey(symbol, state) {
    return symbol === Clutter.KEY_Menu ||
        (symbol === Clutter.KEY_F10 && (state & Clutter.ModifierType.SHIFT_MASK) !== 0);
}

function isPressKey(symbol) {
    return [Clutter.KEY_space, Clutter.KEY_Return, Clutter.KEY_KP_Enter].includes(symbol);
}

// Tovel's icon in the top bar. A click or the space bar activates it; another button, Control, a long
// press or the key for menus opens its menu, which is empty while it is closed, so that the bar does
// not open it when the pointer passes.
export const Indicator = GObject.registerClass(
class TovelIndicator extends PanelMenu.Button {
    // What to do: activate(x, y); wantMenu(), which is to lead to showMenu(items); choose(id);
    // menuClosed().
    constructor(icon, actions) {
        super(0.5, 'Tovel');
        this._actions = actions;
        this._hold = 0; // the source of a long press
        this.add_child(new St.Icon({gicon: icon, style_class: 'system-status-icon'}));
        // Newer versions of the base open the menu at every click by one of these.
        this.get_actions().forEach(action => action.set_enabled(false));
        this.menu.connect('open-state-changed', (menu, isOpen) => {
            if (!isOpen)
                this._actions.menuClosed();
        });
        this.menu.connect('menu-closed', () => {
            if (!this.menu.isOpen)
                this.menu.removeAll();
        });
        this.connect('destroy', () => this._endHold());
    }

    showMenu(items) {
        this.menu.removeAll();
        this._fill(this.menu, items);
        this.menu.open();
    }

    vfunc_event(event) {
        switch (event.type()) {
        case Clutter.EventType.BUTTON_PRESS:
            return this._pressed(event, event.get_button());
        case Clutter.EventType.TOUCH_BEGIN:
            return this._pressed(event, primaryButton);
        case Clutter.EventType.BUTTON_RELEASE:
        case Clutter.EventType.TOUCH_END:
            if (this._endHold())
                this._activate(event.get_coords());
            return Clutter.EVENT_PROPAGATE;
        case Clutter.EventType.LEAVE:
        case Clutter.EventType.TOUCH_CANCEL:
            this._endHold();
            return Clutter.EVENT_PROPAGATE;
        case Clutter.EventType.KEY_PRESS:
            return this._keyPressed(event.get_key_symbol(), event.get_state());
        default:
            return Clutter.EVENT_PROPAGATE;
        }
    }

    _pressed(event, button) {
        this._endHold();
        const isControl = (event.get_state() & Clutter.ModifierType.CONTROL_MASK) !== 0;
        if (button === secondaryButton || (button === primaryButton && isControl)) {
            this._actions.wantMenu();
        } else if (button === primaryButton) {
            this._hold = GLib.timeout_add(GLib.PRIORITY_DEFAULT, longPress, () => {
                this._hold = 0;
                this._actions.wantMenu();
                return GLib.SOURCE_REMOVE;
            });
        }
        return Clutter.EVENT_PROPAGATE;
    }

    _keyPressed(symbol, state) {
        if (isMenuKey(symbol, state))
            this._actions.wantMenu();
        else if (isPressKey(symbol))
            this._activate(this.get_transformed_position());
        else
            return Clutter.EVENT_PROPAGATE;
        return Clutter.EVENT_STOP;
    }

    _activate([x, y]) {
        this._actions.activate(Math.round(x), Math.round(y));
    }

    // Whether there was one that had not come to its end.
    _endHold() {
        if (this._hold === 0)
            return false;
        GLib.source_remove(this._hold);
        this._hold = 0;
        return true;
    }

    // The Shell has one level of menus below the first; what is below that follows its title.
    _fill(menu, items) {
        for (const item of items) {
            if (item.isSeparator) {
                menu.addMenuItem(new PopupMenu.PopupSeparatorMenuItem());
            } else if (item.hasMenu && menu === this.menu) {
                const entry = new PopupMenu.PopupSubMenuMenuItem(item.label);
                this._fill(entry.menu, item.items);
                entry.setOrnament(PopupMenu.Ornament.NONE); // in line with the others
                entry.setSensitive(item.isEnabled);
                menu.addMenuItem(entry);
            } else {
                menu.addMenuItem(this._entry(item));
                this._fill(menu, item.items);
            }
        }
    }

    _entry(item) {
        const entry = new PopupMenu.PopupMenuItem(item.label);
        const mark = item.isRadio ? PopupMenu.Ornament.DOT : PopupMenu.Ornament.CHECK;
        entry.setOrnament(item.isChecked ? mark : PopupMenu.Ornament.NONE);
        entry.setSensitive(item.isEnabled && !item.hasMenu);
        entry.connect('activate', () => this._actions.choose(item.id));
        return entry;
    }
});
