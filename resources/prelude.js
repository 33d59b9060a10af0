// What the compilers expect of a browser and a bare script engine does not have. Evaluated before
// each of them, in a context of its own.
(function (global) {
    "use strict";

    const location = {
        href: "style:///",
        protocol: "style:",
        host: "",
        hostname: "",
        port: "",
        pathname: "/",
        search: "",
        hash: "",
    };

    // A page without any element: Less looks for its options and for style sheets to compile.
    const document = {
        location,
        currentScript: null,
        getElementById: () => null,
        getElementsByTagName: () => [],
    };

    // Less asks for imported files with this, as it does on a web page. There is no network here: the
    // requests wait until whoever runs Less has read their addresses, one a line, from
    // `wantedImports`, has set `importedFiles` to the JSON text of an object with the {text} of
    // each file, or the {problem} with it, and calls `answerImports`.
    let waiting = [];

    class XMLHttpRequest {
        open(method, address) {
            this.address = address;
        }

        setRequestHeader() {}

        getResponseHeader() {
            return null;
        }

        send() {
            waiting.push(this);
        }

        answer({ text, problem }) {
            this.readyState = 4;
            this.status = problem ?? 200; // Less shows it
            this.responseText = text ?? "";
            this.onreadystatechange();
        }
    }

    Object.defineProperty(global, "wantedImports", {
        get: () => waiting.map((request) => request.address).join("\n"),
    });

    global.answerImports = () => {
        const files = JSON.parse(global.importedFiles);
        const answered = waiting;
        waiting = [];
        for (const request of answered)
            request.answer(files[request.address] ?? { problem: "it has no address" });
    };

    // The engine gives an error its own position, that of the statement in the compiler's script, and
    // Stylus would take it for the place in the style. The compilers make their errors with this one,
    // which takes the position away. A function, not a class: errors of old
    // make call it without new.
    const EngineError = global.Error;
    function Error(...given) {
        const error = Reflect.construct(EngineError, given, new.target ?? Error);
        delete error.line;
        delete error.column;
        return error;
    }
    Object.setPrototypeOf(Error, EngineError);
    Error.prototype = EngineError.prototype;
    global.Error = Error;

    Object.assign(global, { window: global, self: global, location, document, XMLHttpRequest });

    // Options that Less picks up when it loads. A style is a stranger's text: no script in it runs,
    // neither inline nor as a plugin; of imported files the application sees to the latter.
    global.less = {
        env: "production",
        onReady: false, // there is no page whose style sheets wait
        javascriptEnabled: false,
        disablePluginRule: true,
        logLevel: 0,
    };
})(globalThis);
