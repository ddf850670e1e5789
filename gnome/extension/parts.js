import Gio from 'gi://Gio';
import GLib from 'gi://GLib';

import {programsIn} from './permission.js';
import {Service} from './service.js';

function textOf(folder, file) {
    const [, contents] = GLib.file_get_contents(GLib.build_filenamev([folder, file]));
    return new TextDecoder().decode(contents);
}

// What the extension is while it is enabled, from the files of its folder.
export class Parts {
    constructor(folder) {
        const bus = Gio.DBus.session;
        const programs = programsIn(textOf(folder, 'programs'));
        this._service = new Service(bus, textOf(folder, 'org.tovel.Shell1.xml'), programs);
    }

    destroy() {
        this._service.destroy();
    }
}
