// Who may use what the extension offers: programs that the build names, outside of any sandbox.

// The absolute paths of a text that has one on each line.
export function programsIn(text) {
    return new Set(text.split('\n').filter(line => line.startsWith('/')));
}

// What /proc says of a process that runs on after its program was replaced.
const replaced = ' (deleted)';

// The target of /proc/PID/exe, "" where nobody could say.
export function isPermitted(executable, programs) {
    if (executable.endsWith(replaced))
        executable = executable.slice(0, -replaced.length);
    return programs.has(executable);
}
