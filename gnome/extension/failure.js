// What a caller is told instead of an answer: a name of a D-Bus error and a sentence.
export class Failure extends Error {
    constructor(error, message) {
        super(message);
        this.error = error;
    }
}

export function denied() {
    return new Failure('org.freedesktop.DBus.Error.AccessDenied',
        'Only programs of Tovel that are installed beside the extension may ask.');
}

export function disabled() {
    return new Failure('org.freedesktop.DBus.Error.UnknownObject', 'The extension is off.');
}

export function invalid(message) {
    return new Failure('org.freedesktop.DBus.Error.InvalidArgs', message);
}

export function gone(message) {
    return new Failure('org.tovel.Shell1.Error.Gone', message);
}

export function refused(message) {
    return new Failure('org.tovel.Shell1.Error.Refused', message);
}
