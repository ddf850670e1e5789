import GLib from 'gi://GLib';

// What a layout of com.canonical.dbusmenu says, as far as a menu in the top bar shows it. It comes
// from another program: what is of another type than it should be counts as not there.

const mostItems = 200;
const deepest = 3;
const longestLabel = 200;

const top = 0; // the identifier of the menu itself

// Two underscores are one; a single one marks a key.
function plainLabel(label) {
    const plain = label.slice(0, 4 * longestLabel).replace(/_(_?)/g, '$1').replace(/\p{Cc}+/gu, ' ');
    return Array.from(plain).slice(0, longestLabel).join('');
}

function property(properties, name, type, otherwise) {
    return properties.lookup_value(name, new GLib.VariantType(type))?.unpack() ?? otherwise;
}

function itemOf(id, properties) {
    const toggle = property(properties, 'toggle-type', 's', '');
    return {
        id,
        isSeparator: property(properties, 'type', 's', '') === 'separator',
        label: plainLabel(property(properties, 'label', 's', '')),
        isEnabled: property(properties, 'enabled', 'b', true),
        isRadio: toggle === 'radio',
        isChecked: toggle !== '' && property(properties, 'toggle-state', 'i', 0) === 1,
        hasMenu: property(properties, 'children-display', 's', '') === 'submenu',
        items: [],
    };
}

function itemsBelow(children, depth, count) {
    const items = [];
    for (let index = 0; index < children.n_children() && count.left > 0; index++) {
        count.left--;
        const layout = children.get_child_value(index).get_variant();
        if (layout.get_type_string() !== '(ia{sv}av)')
            continue;
        const properties = layout.get_child_value(1);
        const item = itemOf(layout.get_child_value(0).get_int32(), properties);
        if (item.id === top || !property(properties, 'visible', 'b', true))
            continue;
        if (item.hasMenu && depth < deepest)
            item.items = itemsBelow(layout.get_child_value(2), depth + 1, count);
        items.push(item);
    }
    return items;
}

// The items of a layout of the type (ia{sv}av); none for any other.
export function menuItems(layout) {
    if (layout.get_type_string() !== '(ia{sv}av)')
        return [];
    return itemsBelow(layout.get_child_value(2), 1, {left: mostItems});
}
