# The extension of GNOME Shell that tells where the item is. The shell loads it in one way up to version 44 and in another from
# 45 on, which no file can be written for both: so there are two extensions, made of the same source.
set(TARNWICK_EXTENSIONS ${PROJECT_BINARY_DIR}/share/gnome-shell/extensions)

function(tarnwick_extension uuid versions before after)
    set(source ${PROJECT_SOURCE_DIR}/packaging/gnome/itemPlace.js)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
    file(READ ${source} body)
    file(CONFIGURE OUTPUT ${TARNWICK_EXTENSIONS}/${uuid}/extension.js CONTENT "${before}${body}${after}" @ONLY)
    configure_file(packaging/gnome/metadata.json.in ${TARNWICK_EXTENSIONS}/${uuid}/metadata.json @ONLY)
endfunction()

tarnwick_extension(item-place@tarnwick.org [["45", "46", "47", "48", "49"]]
    [[import Gio from 'gi://Gio';
import GLib from 'gi://GLib';
import St from 'gi://St';
import * as Main from 'resource:///org/gnome/shell/ui/main.js';

]]
    [[

export default ItemPlace;
]])
tarnwick_extension(item-place-43@tarnwick.org [["43", "44"]]
    [[/* exported init */
const { Gio, GLib, St } = imports.gi;
const Main = imports.ui.main;

]]
    [[

function init() {
    return new ItemPlace();
}
]])
