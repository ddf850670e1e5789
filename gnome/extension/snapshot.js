// The session as text, and which of its states that is.

const longestText = 1024;

// Window types of the Shell, by their numbers.
const typeNames = ['normal', 'desktop', 'dock', 'dialog', 'dialog'];
const firstPopUp = 9;

export function isListedType(type) {
    return type < firstPopUp;
}

// A Wayland window that has a parent is a dialog, whatever its type says.
export function typeName(type, hasParent) {
    const name = typeNames[type] ?? 'other';
    return name === 'normal' && hasParent ? 'dialog' : name;
}

export function clipped(text) {
    if (!text)
        return '';
    if (text.length <= longestText)
        return text;
    const end = text.charCodeAt(longestText - 1);
    const isHalf = end >= 0xd800 && end < 0xdc00; // of a character
    return text.slice(0, isHalf ? longestText - 1 : longestText);
}

// The windows are texts already.
export function sessionText(session, windowTexts, stacking) {
    const head = JSON.stringify(session).slice(0, -1);
    return `${head},"windows":[${windowTexts.join(',')}],"stacking":${JSON.stringify(stacking)}}`;
}

// Numbers for different texts, one after another.
export class Revisions {
    // Before the first.
    constructor(before) {
        this._text = null;
        this._number = before;
    }

    // The text of the number.
    get text() {
        return this._text;
    }

    of(text) {
        if (text !== this._text) {
            this._text = text;
            this._number++;
        }
        return this._number;
    }
}
