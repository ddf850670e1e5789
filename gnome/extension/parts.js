import Gio from 'gi://Gio';
import GLib from 'gi://GLib';

import {Callers} from './callers.js';
import {Grabs} from './grabs.js';
import {Hints} from './hints.js';
import {programsIn} from './permission.js';
import {Service} from './service.js';
import {Session} from './session.js';
import {Tray} from './tray.js';

function textOf(path) {
    const [, contents] = GLib.file_get_contents(path);
    return new TextDecoder().decode(contents);
}

// What the extension is while it is enabled, from the files of its folder.
export class Parts {
    constructor(folder) {
        this._parts = [];
        try {
            this._make(file => GLib.build_filenamev([folder, file]));
        } catch (error) {
            this.destroy();
            throw error;
        }
    }

    destroy() {
        for (const part of this._parts.splice(0).reverse()) {
            try {
                part.destroy();
            } catch (error) {
                console.error(error);
            }
        }
    }

    _make(pathOf) {
        const bus = Gio.DBus.session;
        const own = part => {
            this._parts.push(part);
            return part;
        };
        let service = null;
        const hints = own(new Hints(() => service?.tellChange()));
        const session = own(new Session(() => hints.give()));
        const grabs = own(new Grabs((client, ...key) => service?.tellKey(client, ...key)));
        const programs = programsIn(textOf(pathOf('programs')));
        const callers = own(new Callers(bus, programs, client => grabs.giveAll(client)));
        const description = textOf(pathOf('org.tovel.Shell1.xml'));
        service = own(new Service(bus, description, callers, session, grabs));
        own(new Tray(bus, callers, pathOf('tovel-symbolic.svg')));
    }
}
