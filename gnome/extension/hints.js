import GLib from 'gi://GLib';

const pause = 50; // ms between two of them

// Calls a function each time that it is asked to, but not more often than is good for others.
export class Hints {
    constructor(hint) {
        this._hint = hint;
        this._isDue = false;
        this._source = 0; // while nothing may be said
    }

    destroy() {
        if (this._source !== 0)
            GLib.source_remove(this._source);
        this._source = 0;
    }

    give() {
        this._isDue = true;
        if (this._source === 0)
            this._say();
    }

    _say() {
        this._isDue = false;
        this._source = GLib.timeout_add(GLib.PRIORITY_DEFAULT, pause, () => {
            this._source = 0;
            if (this._isDue)
                this._say();
            return GLib.SOURCE_REMOVE;
        });
        this._hint();
    }
}
