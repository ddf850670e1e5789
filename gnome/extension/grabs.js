import Meta from 'gi://Meta';
import Shell from 'gi://Shell';

import * as Main from 'resource:///org/gnome/shell/ui/main.js';

import {Connections} from './connections.js';
import {invalid, refused} from './failure.js';
import {accelerator} from './keys.js';

const mostOfAClient = 8;

// The keys that clients have taken.
export class Grabs {
    // The function is called with the client, the position and the modifiers of a key that was
    // pressed.
    constructor(pressed) {
        this._grabs = new Map(); // by the Shell's number
        this._connections = new Connections();
        this._connections.connect(global.display, 'accelerator-activated', (display, action) => {
            const grab = this._grabs.get(action);
            if (grab)
                pressed(grab.client, grab.position, grab.modifiers);
        });
    }

    destroy() {
        this._connections.disconnectAll();
        for (const action of [...this._grabs.keys()])
            this._give(action);
    }

    // Whether the client has the key now.
    take(client, position, modifiers) {
        const name = accelerator(position, modifiers);
        if (name === null)
            throw invalid('A key needs a position and Control, Alt or Super.');
        if (this._find(client, position, modifiers) !== undefined)
            return true;
        if ([...this._grabs.values()].filter(grab => grab.client === client).length >= mostOfAClient)
            throw refused(`${mostOfAClient} keys are all that a client may take.`);
        const action = global.display.grab_accelerator(name, Meta.KeyBindingFlags.IGNORE_AUTOREPEAT);
        if (action === Meta.KeyBindingAction.NONE)
            return false;
        const binding = Meta.external_binding_name_for_action(action);
        Main.wm.allowKeybinding(binding, Shell.ActionMode.ALL);
        this._grabs.set(action, {client, position, modifiers, binding});
        return true;
    }

    give(client, position, modifiers) {
        const action = this._find(client, position, modifiers);
        if (action !== undefined)
            this._give(action);
    }

    giveAll(client) {
        for (const [action, grab] of [...this._grabs]) {
            if (grab.client === client)
                this._give(action);
        }
    }

    _find(client, position, modifiers) {
        for (const [action, grab] of this._grabs) {
            if (grab.client === client && grab.position === position &&
                grab.modifiers === modifiers)
                return action;
        }
        return undefined;
    }

    _give(action) {
        global.display.ungrab_accelerator(action);
        Main.wm.allowKeybinding(this._grabs.get(action).binding, Shell.ActionMode.NONE);
        this._grabs.delete(action);
    }
}
