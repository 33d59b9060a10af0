// The page that holds the code editor. The application drives it through these globals:
//   editor          the Ace editor; `ace` and `Range` are the library's
//   reportChanges   while true, each change of the text posts "stringChanged" to "callback"
//   focusEditor()   gives the editor the keyboard
//   announceInput() posts "inputHandled" to "callback" after what is typed by now
//   css_beautify    the CSS beautifier
"use strict";

ace.config.set("basePath", new URL(".", document.baseURI).href);

// The editor's own keys are asked for by name as a keyboard handler; the library has no module of
// that name, and a module without a handler keeps them.
ace.define("ace/keyboard/ace", ["require", "exports", "module"], () => {});

var editor = ace.edit("editor");
var reportChanges = false;

// The application counts the place just past a line's break to that line. Here it is the start of
// the next one: a selection that begins there does not take the break before it.
var Range = class extends ace.Range {
    constructor(startRow, startColumn, endRow, endColumn) {
        super(...Range.inText(startRow, startColumn), ...Range.inText(endRow, endColumn));
    }

    static inText(row, column) {
        const lines = editor.session;
        const isPast = column > lines.getLine(row).length && row + 1 < lines.getLength();
        return isPast ? [row + 1, 0] : [row, column];
    }
};

// Else it looks for its abbreviations' library as soon as a mode is set; nobody turns it on here.
editor.setOption("enableEmmet", false);

// What the application does after it has set a text comes late, by way of itself: a key pressed until
// then would replace the text, which the library selects; undo would bring back the one before; what
// is typed would not be reported, the cursor taken away from it, and its undo forgotten. So all of
// that is done at once here, and the application's own calls, one of each for each text, do nothing.
const skipped = [];
function skipAfterText(object, name, isMeant = () => true) {
    const original = object[name];
    const calls = { toCome: 0 };
    object[name] = (...values) => {
        if (calls.toCome === 0 || !isMeant(...values)) return original.apply(object, values);
        --calls.toCome;
    };
    skipped.push(calls);
}
skipAfterText(editor, "clearSelection");
skipAfterText(editor, "moveCursorTo", (row, column) => row === 0 && column === 0);
skipAfterText(editor.session, "setUndoManager");

const setWholeText = editor.setValue;
editor.setValue = (text) => {
    const taken = setWholeText.call(editor, text, -1);
    editor.session.getUndoManager().reset();
    reportChanges = true;
    for (const calls of skipped) ++calls.toCome;
    return taken;
};

function focusEditor() {
    editor.focus();
}

// A key comes to the page by way of the drawing thread, which a statement may overtake; what has
// been drawn since then it has not.
function announceInput() {
    const announce = () => messageHandlers.callback.postMessage("inputHandled");
    requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(announce)));
}

// What the application does itself (finding, its settings), and what leads out of the page.
editor.commands.removeCommands([
    "find",
    "findnext",
    "findprevious",
    "replace",
    "showSettingsMenu",
    "openCommandPallete",
    "openCommandPalette",
    "modeSelect",
    "openlink",
]);

// What the application itself has done, such as laying out the code, came as a new text, before
// which the editor forgot its own steps. So these go first, and then the application's.
for (const name of ["undo", "redo"]) {
    const command = editor.commands.commands[name];
    const exec = (target) => {
        const steps = target.session.getUndoManager();
        if (name === "undo" ? steps.canUndo() : steps.canRedo()) command.exec(target);
        else messageHandlers.callback.postMessage(name);
    };
    editor.commands.addCommand({ ...command, exec });
}

editor.on("change", () => {
    if (reportChanges) messageHandlers.callback.postMessage("stringChanged");
});

// The engine hands other keys on that the page leaves, but not this one.
addEventListener("keydown", (event) => {
    if (event.key === "Escape" && !event.defaultPrevented && !event.isComposing)
        messageHandlers.callback.postMessage("escape");
});
