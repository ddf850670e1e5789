// The parts of GNOME Shell's extension that need no Shell:
//   gjs -m tst_core.js

import Gio from 'gi://Gio';
import GLib from 'gi://GLib';
import System from 'system';

import {Callers} from '../../gnome/extension/callers.js';
import {accelerator} from '../../gnome/extension/keys.js';
import {menuItems} from '../../gnome/extension/menu_items.js';
import {isPermitted, programsIn} from '../../gnome/extension/permission.js';
import {clipped, Revisions, sessionText, typeName} from '../../gnome/extension/snapshot.js';

let failures = 0;

function compare(name, seen, expected) {
    if (JSON.stringify(seen) === JSON.stringify(expected))
        return;
    failures++;
    printerr(`FAIL: ${name}\n  seen     ${JSON.stringify(seen)}\n  expected ${JSON.stringify(expected)}`);
}

function compareEach(name, of, rows) {
    for (const [values, expected] of rows)
        compare(`${name}(${JSON.stringify(values)})`, of(...values), expected);
}

const programs = programsIn('# comment\n/usr/bin/tovel\n\nbin/relative\n/usr/bin/tovelctl\n');
compareEach('isPermitted', executable => isPermitted(executable, programs), [
    [['/usr/bin/tovel'], true],
    [['/usr/bin/tovelctl (deleted)'], true], // replaced by an upgrade
    [['/usr/bin/tovel (deleted) (deleted)'], false],
    [['/usr/bin/tovel2'], false],
    [['/home/me/usr/bin/tovel'], false],
    [['bin/relative'], false],
    [[''], false],
]);

compareEach('accelerator', accelerator, [
    [[20, 4 | 8 | 64], '<Control><Alt><Super>0x1c'],
    [[2, 1 | 64], '<Shift><Super>0x0a'],
    [[20, 1], null], // would take a capital letter
    [[20, 0], null],
    [[20, 4 | 2], null],
    [[0, 4], null],
    [[247, 4], '<Control>0xff'],
    [[248, 4], null],
]);

compareEach('typeName', typeName, [
    [[0, false], 'normal'], [[0, true], 'dialog'], [[1, true], 'desktop'], [[2, false], 'dock'],
    [[3, false], 'dialog'], [[4, false], 'dialog'], [[7, true], 'other'],
]);

compareEach('clipped', text => clipped(text)?.length, [
    [[null], 0],
    [['a'.repeat(1024)], 1024],
    [['a'.repeat(1025)], 1024],
    [[`${'a'.repeat(1023)}😀`], 1023], // not half of a character
]);

const revisions = new Revisions(6);
compare('revisions', ['a', 'a', 'b', 'a'].map(text => revisions.of(text)), [7, 7, 8, 9]);
compare('sessionText', JSON.parse(sessionText({active: 1}, ['{"id":1}', '{"id":2}'], [2, 1])),
    {active: 1, windows: [{id: 1}, {id: 2}], stacking: [2, 1]});

// A layout with these children: [id, properties, children…].
function layout(id, properties, ...children) {
    return new GLib.Variant('(ia{sv}av)', [id, properties, children.map(
        child => child instanceof GLib.Variant ? child : layout(...child))]);
}

const text = value => new GLib.Variant('s', value);
const no = new GLib.Variant('b', false);
const on = new GLib.Variant('i', 1);
function shortly(items) {
    return items.map(item => item.isSeparator ? '-' : [
        item.id, item.label, ...['isEnabled', 'isRadio', 'isChecked'].filter(is => item[is]),
        ...item.hasMenu ? [shortly(item.items)] : [],
    ]);
}
const submenu = {'children-display': text('submenu')};
compare('menuItems', shortly(menuItems(layout(0, {},
    [1, {label: text('_Open a__b\n')}],
    [2, {type: text('separator')}],
    [3, {label: text('Off'), enabled: no}],
    [4, {label: text('Gone'), visible: no}],
    [5, {label: text('On'), 'toggle-type': text('checkmark'), 'toggle-state': on}],
    [6, {label: text('Radio'), 'toggle-type': text('radio'), 'toggle-state': new GLib.Variant('i', 0)}],
    [7, {label: no, enabled: text('no'), visible: on}],
    [8, submenu, [9, submenu, [10, submenu, [11, {}]]]],
    [0, {label: text('The menu itself')}],
    text('no layout')
))), [
    [1, 'Open a_b ', 'isEnabled'], '-', [3, 'Off'], [5, 'On', 'isEnabled', 'isChecked'],
    [6, 'Radio', 'isEnabled', 'isRadio'], [7, '', 'isEnabled'],
    [8, '', 'isEnabled', [[9, '', 'isEnabled', [[10, '', 'isEnabled', []]]]]],
]);
const many = Array(300).fill([1, {label: text('x'.repeat(5000))}]);
const items = menuItems(layout(0, {}, ...many));
compare('a menu without end', [items.length, items[0].label.length], [200, 200]);
const odd = Array(200).fill(text('no layout'));
compare('a menu that comes too late', menuItems(layout(0, {}, ...odd, [1, {}])), []);
compare('no menu', menuItems(new GLib.Variant('(is)', [0, ''])), []);

// A bus on which each client is this process. It answers when it is told to.
class Bus {
    constructor() {
        this.questions = [];
        this.watched = new Map();
    }

    signal_subscribe(sender, face, signal, path, name, flags, leave) {
        this.watched.set(name, leave);
        return name;
    }

    signal_unsubscribe(name) {
        this.watched.delete(name);
    }

    call(...values) {
        this.questions.push(values.pop());
    }

    answer(process = new Gio.Credentials().get_unix_pid()) {
        const bus = {
            call_finish() {
                return new GLib.Variant('(u)', [process]);
            },
        };
        this.questions.splice(0).forEach(take => take(bus, null));
    }
}

const here = GLib.file_read_link('/proc/self/exe');
const fake = new Bus();
const said = [];
const callers = new Callers(fake, new Set([here]), name => said.push(`${name} left`));
const ask = name => callers.ask(name, (process, failure) =>
    said.push(failure ? failure.error.replace(/.*\./, '') : process > 0));
const heard = () => said.splice(0);
ask(':1');
ask(':1');
compare('who is not known waits, and is looked for once', [heard(), fake.questions.length], [[], 1]);
fake.answer();
ask(':1');
compare('who is known waits no more', [heard(), fake.questions.length], [[true, true, true], 0]);
fake.watched.get(':1')();
compare('who leaves is forgotten', [heard(), fake.watched.size], [[':1 left'], 0]);
ask(':2');
fake.watched.get(':2')();
fake.answer();
compare('who left while it waited', heard(), ['AccessDenied', ':2 left']);
ask(':3');
fake.answer(0x7fffffff);
compare('whose process is not there', heard(), ['AccessDenied']);
// The same program, where other files may be at its path.
const contained = Gio.Subprocess.new(
    ['unshare', '--map-root-user', '--mount', here, '-c', 'print(1); imports.gi.GLib.usleep(3e7);'],
    Gio.SubprocessFlags.STDOUT_PIPE | Gio.SubprocessFlags.STDERR_SILENCE);
if (contained.get_stdout_pipe().read_bytes(1, null).get_size() === 1) {
    ask(':4');
    fake.answer(Number(contained.get_identifier()));
    compare('whoever is in a container', heard(), ['AccessDenied']);
    contained.force_exit();
} else {
    print('SKIP: this user may make no namespaces');
}
ask(':5');
callers.destroy();
fake.answer();
compare('who waits while all ends', [heard(), fake.watched.size], [['UnknownObject'], 0]);

System.exit(failures === 0 ? 0 : 1);
