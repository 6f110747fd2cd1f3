"""A page with a text field, that tells a server of its own what the field holds."""

import http.server
import json
import threading

FIELDS = {
    "textarea": '<textarea id="field" rows="8" cols="80"></textarea>',
    "input": '<input id="field" size="80">',
    "search": '<input id="field" type="search" size="80">',
    "password": '<input id="field" type="password" size="80">',
    "contenteditable":
        '<div id="field" contenteditable="true" style="white-space: pre-wrap"></div>',
}

# The caret is put behind the text. The field is asked, too, not only heard: a change that causes
# no event is one, too.
PAGE = """<!DOCTYPE html>
<meta charset="utf-8"><title>letter</title>
<p>Dear reader,</p>
{field}
<script>
const field = document.getElementById("field");
const editable = field.isContentEditable;
const read = () => editable ? field.innerText : field.value;
let told = null, number = 0;
// What is told is numbered, since it arrives in any order.
function tell() {{
    const focused = document.hasFocus() && document.activeElement === field;
    const state = {{text: read(), focused}};
    if (JSON.stringify(state) === told)
        return;
    told = JSON.stringify(state);
    fetch("/state", {{method: "POST", body: JSON.stringify({{number: ++number, ...state}})}});
}}
if (editable) {{
    field.innerText = {text};
    field.focus();
    getSelection().selectAllChildren(field);
    getSelection().collapseToEnd();
}} else {{
    field.value = {text};
    field.focus();
    field.setSelectionRange(field.value.length, field.value.length);
}}
field.addEventListener("input", tell);
setInterval(tell, 100);
</script>
"""


class Page:
    """Serves the page with a field of that kind, holding the text, on a port of its own."""

    def __init__(self, field, text):
        page = PAGE.format(field=FIELDS[field], text=json.dumps(text)).encode()
        self.state = {"number": 0, "text": None, "focused": False}
        told, telling = self, threading.Lock()

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                self.send_response(200)
                self.send_header("Content-Type", "text/html")
                self.end_headers()
                self.wfile.write(page)

            def do_POST(self):
                state = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
                with telling:
                    if state["number"] > told.state["number"]:
                        told.state = state
                self.send_response(204)
                self.end_headers()

            def log_message(self, *_):
                pass

        self._server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self._server.daemon_threads = True
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    @property
    def address(self):
        return f"http://127.0.0.1:{self._server.server_port}/"

    def close(self):
        self._server.shutdown()
        self._server.server_close()
