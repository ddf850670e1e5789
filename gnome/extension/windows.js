import Meta from 'gi://Meta';
import Shell from 'gi://Shell';

import {Connections} from './connections.js';
import {gone} from './failure.js';
import {clipped, isListedType, typeName} from './snapshot.js';

// The X window; 0 for one of Wayland.
function xWindow(window) {
    if (window.get_client_type() !== Meta.WindowClientType.X11)
        return 0;
    return Number.parseInt(window.get_description(), 16) || 0;
}

function parentOf(window) {
    return window.get_transient_for()?.get_stable_sequence() ?? 0;
}

// Those that are not drawn yet have no size.
function isListed(window) {
    return isListedType(window.get_window_type()) && window.get_frame_rect().width > 0;
}

// The windows that programs have, each with its description, which is kept until a signal says that
// it may be another one.
export class Windows {
    // The function is called when something about them may have changed.
    constructor(workspaces, changed) {
        this._workspaces = workspaces;
        this._changed = changed;
        this._tracker = Shell.WindowTracker.get_default();
        this._entries = new Map();
        const windows = global.display.list_all_windows();
        windows.sort((a, b) => a.get_stable_sequence() - b.get_stable_sequence());
        for (const window of windows)
            this._add(window);
        this._connections = new Connections();
        this._connections.connect(global.display, 'window-created', (display, window) => {
            this._add(window);
            changed();
        });
        this._connections.connect(global.display, 'window-entered-monitor', 'window-left-monitor',
            (display, monitor, window) => this._note(window.get_stable_sequence()));
        this._connections.connect(global.display, 'notify::focus-window', 'restacked', changed);
        // Which application a window is of may be known late. This comes with each new window, too.
        this._haveApps = false; // been looked at since
        this._connections.connect(this._tracker, 'tracked-windows-changed', () => {
            this._haveApps = false;
            changed();
        });
    }

    destroy() {
        this._connections.disconnectAll();
        for (const id of [...this._entries.keys()])
            this._remove(id);
    }

    withId(id) {
        const window = this._entries.get(id)?.window;
        if (!window || !isListed(window))
            throw gone(`There is no window ${id}.`);
        return window;
    }

    active() {
        const window = global.display.focus_window;
        return window && isListed(window) ? window.get_stable_sequence() : 0;
    }

    // {texts, stacking}: the windows as JSON, oldest first, and their numbers, front to back.
    describe() {
        const listed = [];
        const texts = [];
        for (const entry of this._entries.values()) {
            const {window} = entry;
            // No signal tells of another parent.
            const parent = parentOf(window);
            const isKnown = entry.text !== null;
            const appId = isKnown && this._haveApps ? entry.appId : this._appIdOf(window);
            if (!isKnown || parent !== entry.parent || appId !== entry.appId) {
                entry.parent = parent;
                entry.appId = appId;
                entry.text = isListed(window)
                    ? JSON.stringify(this._record(window, parent, appId)) : '';
            }
            if (entry.text !== '') {
                listed.push(window);
                texts.push(entry.text);
            }
        }
        this._haveApps = true;
        const stacking = global.display.sort_windows_by_stacking(listed)
            .map(window => window.get_stable_sequence()).reverse();
        return {texts, stacking};
    }

    _record(window, parent, appId) {
        const frame = window.get_frame_rect();
        return {
            id: window.get_stable_sequence(),
            type: typeName(window.get_window_type(), parent !== 0),
            title: clipped(window.get_title()),
            workspace: this._workspaceOf(window),
            monitor: window.get_monitor(),
            minimized: window.minimized,
            fullScreen: window.is_fullscreen(),
            skipsTaskBar: window.is_skip_taskbar(),
            frame: [frame.x, frame.y, frame.width, frame.height],
            parent,
            process: Math.max(window.get_pid(), 0),
            x11: xWindow(window),
            appId,
            sandboxId: clipped(window.get_sandboxed_app_id()),
            gtkApplicationId: clipped(window.get_gtk_application_id()),
            className: clipped(window.get_wm_class()),
            instanceName: clipped(window.get_wm_class_instance()),
        };
    }

    _appIdOf(window) {
        return clipped(this._tracker.get_window_app(window)?.get_id());
    }

    _workspaceOf(window) {
        const workspace = window.is_on_all_workspaces() ? null : window.get_workspace();
        return workspace ? this._workspaces.idOf(workspace) : 0;
    }

    _add(window) {
        const id = window.get_stable_sequence();
        if (window.is_override_redirect() || this._entries.has(id))
            return;
        const connections = new Connections();
        connections.connect(window, 'notify::title', 'notify::wm-class',
            'notify::gtk-application-id', 'notify::minimized', 'notify::fullscreen',
            'notify::skip-taskbar', 'notify::on-all-workspaces', 'notify::window-type',
            'workspace-changed', 'position-changed', 'size-changed', () => this._note(id));
        connections.connect(window, 'unmanaging', () => {
            this._remove(id);
            this._changed();
        });
        this._entries.set(id, {window, connections, text: null, parent: 0, appId: ''});
    }

    _remove(id) {
        this._entries.get(id).connections.disconnectAll();
        this._entries.delete(id);
    }

    _note(id) {
        const entry = this._entries.get(id);
        if (!entry)
            return;
        entry.text = null;
        this._changed();
    }
}
