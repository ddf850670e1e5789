import Gio from 'gi://Gio';

import {Connections} from './connections.js';
import {gone} from './failure.js';
import {clipped} from './snapshot.js';

let last = 0; // number that was given
let lastRow = []; // the numbers of the row when the extension was disabled

// The workspaces with numbers of their own. A row that has not changed its length while the
// extension was disabled, as when the screen was locked, has the numbers of before.
export class Workspaces {
    // The function is called when something about them may have changed.
    constructor(changed) {
        this._manager = global.workspace_manager;
        this._preferences = new Gio.Settings({schema_id: 'org.gnome.desktop.wm.preferences'});
        const row = this._row();
        row.forEach((workspace, index) => {
            workspace._tovelId = row.length === lastRow.length ? lastRow[index] : ++last;
        });
        this._connections = new Connections();
        this._connections.connect(this._manager, 'workspace-added', 'workspace-removed',
            'workspaces-reordered', 'active-workspace-changed', changed);
        this._connections.connect(this._preferences, 'changed::workspace-names', changed);
    }

    destroy() {
        this._connections.disconnectAll();
        lastRow = this._row().map(workspace => this.idOf(workspace));
        for (const workspace of this._row())
            delete workspace._tovelId;
    }

    // The number stays with the object: others that stand for it come and go.
    idOf(workspace) {
        workspace._tovelId ??= ++last;
        return workspace._tovelId;
    }

    withId(id) {
        const workspace = this._row().find(one => this.idOf(one) === id);
        if (!workspace)
            throw gone(`There is no workspace ${id}.`);
        return workspace;
    }

    shown() {
        return this.idOf(this._manager.get_active_workspace());
    }

    describe() {
        const names = this._preferences.get_strv('workspace-names');
        return this._row().map((workspace, index) =>
            ({id: this.idOf(workspace), name: clipped(names[index])}));
    }

    _row() {
        const row = [];
        for (let index = 0; index < this._manager.n_workspaces; index++)
            row.push(this._manager.get_workspace_by_index(index));
        return row;
    }
}
