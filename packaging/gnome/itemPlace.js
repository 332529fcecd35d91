// Tells the program where the shell shows its status item, so that what drops down opens there: on Wayland no program can
// know the place of another program's window. It reads and changes nothing else.

const NAME = 'org.tarnwick.ItemPlace';
const PATH = '/org/tarnwick/ItemPlace';
const INTERFACE = `<node>
  <interface name="${NAME}">
    <method name="Find">
      <arg type="(ii)" direction="out" name="middle"/>
    </method>
  </interface>
</node>`;

class ItemPlace {
    enable() {
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(Gio.DBus.session, PATH);
        this._owner = Gio.bus_own_name_on_connection(
            Gio.DBus.session, NAME, Gio.BusNameOwnerFlags.NONE, null, null);
    }

    disable() {
        Gio.bus_unown_name(this._owner);
        this._object.unexport();
        this._object = null;
    }

    // The extension that shows status items keeps each in the panel under a name made of the bus name of its program.
    FindAsync(_parameters, invocation) {
        const name = `appindicator-${invocation.get_sender()}`;
        const item = Object.entries(Main.panel.statusArea)
            .find(([key]) => key === name || key.startsWith(`${name}@`))?.[1];
        if (!item?.container?.mapped) {
            invocation.return_dbus_error('org.tarnwick.Error.NotShown', 'The panel shows no item of this program.');
            return;
        }
        const [x, y] = item.container.get_transformed_position();
        const [width, height] = item.container.get_transformed_size();
        // The shell counts in pixels unless scales are fractions, programs in units. Monitors stay where they are.
        const pixels = St.ThemeContext.get_for_stage(global.stage).scale_factor;
        const {x: left, y: top} = Main.layoutManager.primaryMonitor;
        const middle = [left + (x + width / 2 - left) / pixels, top + (y + height / 2 - top) / pixels].map(Math.round);
        invocation.return_value(new GLib.Variant('((ii))', [middle]));
    }
}
