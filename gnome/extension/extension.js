import {Extension} from 'resource:///org/gnome/shell/extensions/extension.js';

import {Parts} from './parts.js';

// As GNOME Shell 45 and later load it.
export default class TovelExtension extends Extension {
    enable() {
        this._parts = new Parts(this.path);
    }

    disable() {
        this._parts?.destroy();
        this._parts = null;
    }
}
