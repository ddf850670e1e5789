// Keys by where they are on the keyboard.

const modifierNames = [[1, '<Shift>'], [4, '<Control>'], [8, '<Alt>'], [64, '<Super>']];
const allModifiers = 1 | 4 | 8 | 64;
const typingModifiers = 1; // with nothing else they make text

// The Shell counts as X does.
const codeOffset = 8;
const lastCode = 255;

// What the Shell calls a key of the kernel's code with these modifiers; null for one that is no key,
// or that would take text from whoever types it.
export function accelerator(position, modifiers) {
    if (position < 1 || position + codeOffset > lastCode)
        return null;
    if ((modifiers & ~allModifiers) !== 0 || (modifiers & ~typingModifiers) === 0)
        return null;
    const names = modifierNames.filter(([bit]) => modifiers & bit).map(([, name]) => name);
    return `${names.join('')}0x${(position + codeOffset).toString(16).padStart(2, '0')}`;
}
