import Clutter from 'gi://Clutter';
import Gio from 'gi://Gio';
import GLib from 'gi://GLib';

import * as Main from 'resource:///org/gnome/shell/ui/main.js';

import {Connections} from './connections.js';
import {refused} from './failure.js';
import {Revisions, sessionText} from './snapshot.js';
import {Windows} from './windows.js';
import {Workspaces} from './workspaces.js';

function now() {
    return global.display.get_current_time_roundtrip();
}

function contains({x, y, width, height}, pointX, pointY) {
    return pointX >= x && pointX < x + width && pointY >= y && pointY < y + height;
}

// What the Shell shows, and what is asked of it.
export class Session {
    // The function is called when the snapshot may be another one.
    constructor(changed) {
        this._changed = changed;
        this._hasChanged = true;
        const note = () => this._note();
        this._workspaces = new Workspaces(note);
        this._windows = new Windows(this._workspaces, note);
        this._mutter = new Gio.Settings({schema_id: 'org.gnome.mutter'});
        this._connections = new Connections();
        this._connections.connect(this._mutter, 'changed::workspaces-only-on-primary', note);
        this._connections.connect(Main.layoutManager, 'monitors-changed', note);
        // Later than all numbers that were given before the extension was enabled again.
        this._revisions = new Revisions(GLib.get_monotonic_time());
    }

    destroy() {
        this._connections.disconnectAll();
        this._windows.destroy();
        this._workspaces.destroy();
    }

    // [revision, text], without a text where the revision is the known one.
    snapshot(known) {
        const {texts, stacking} = this._windows.describe();
        const revision = this._revisions.of(sessionText({
            active: this._windows.active(),
            onlyOnPrimary: this._mutter.get_boolean('workspaces-only-on-primary'),
            shown: this._workspaces.shown(),
            workspaces: this._workspaces.describe(),
            monitors: this._monitors(),
        }, texts, stacking));
        this._hasChanged = false;
        return [revision, revision === known ? '' : this._revisions.text];
    }

    moveWindow(id, workspaceId) {
        const window = this._windows.withId(id);
        const workspace = this._workspaces.withId(workspaceId);
        if (window.is_on_all_workspaces())
            throw refused('The window is on all workspaces.');
        window.change_workspace(workspace);
        if (window.get_workspace() !== workspace)
            throw refused('The window stayed on its workspace.');
    }

    showWorkspace(id) {
        const workspace = this._workspaces.withId(id);
        workspace.activate(now());
        if (this._workspaces.shown() !== id)
            throw refused('Another workspace stayed.');
    }

    activateWindow(id) {
        Main.activateWindow(this._windows.withId(id), now());
    }

    raiseWindow(id) {
        this._windows.withId(id).raise();
    }

    setOnAllWorkspaces(process, id, on) {
        const window = this._own(process, id);
        if (on)
            window.stick();
        else
            window.unstick();
    }

    setAbove(process, id, on) {
        const window = this._own(process, id);
        if (on)
            window.make_above();
        else
            window.unmake_above();
    }

    placeWindow(process, id, x, y) {
        const clamp = (value, length) => Math.max(0, Math.min(value, length - 1));
        this._own(process, id).move_frame(true, clamp(x, global.stage.width),
            clamp(y, global.stage.height));
    }

    cursorPosition() {
        return global.get_pointer().slice(0, 2);
    }

    moveCursor(x, y) {
        if (!Main.layoutManager.monitors.some(monitor => contains(monitor, x, y)))
            throw refused('No monitor has that point.');
        Clutter.get_default_backend().get_default_seat().warp_pointer(Math.trunc(x), Math.trunc(y));
    }

    _own(process, id) {
        const window = this._windows.withId(id);
        if (window.get_pid() !== process)
            throw refused('The window is of another process.');
        return window;
    }

    _monitors() {
        const {monitors, primaryIndex} = Main.layoutManager;
        return monitors.map(({x, y, width, height}, index) => ({
            bounds: [x, y, width, height],
            primary: index === primaryIndex,
        }));
    }

    // Once until somebody looks.
    _note() {
        if (this._hasChanged)
            return;
        this._hasChanged = true;
        this._changed();
    }
}
