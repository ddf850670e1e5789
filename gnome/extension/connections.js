// Signal handlers that go together.
export class Connections {
    constructor() {
        this._handlers = [];
    }

    // Names of signals, then the function.
    connect(object, ...signals) {
        const handler = signals.pop();
        for (const signal of signals)
            this._handlers.push([object, object.connect(signal, handler)]);
    }

    disconnectAll() {
        for (const [object, id] of this._handlers.splice(0))
            object.disconnect(id);
    }
}
