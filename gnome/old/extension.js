'use strict';

/* exported init */

const {Parts} = imports.misc.extensionUtils.getCurrentExtension().imports.parts;

// As GNOME Shell 43 and 44 load it.
class TovelExtension {
    constructor(folder) {
        this._folder = folder;
        this._parts = null;
    }

    enable() {
        this._parts = new Parts(this._folder);
    }

    disable() {
        this._parts?.destroy();
        this._parts = null;
    }
}

function init(metadata) {
    return new TovelExtension(metadata.path);
}
