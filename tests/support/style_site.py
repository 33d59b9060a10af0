#!/usr/bin/env python3
"""A web server on this machine for the tests: files of a folder by http and by https.

    style_site.py FOLDER

Writes one line: the port of http, the port of https, and the file with the certificate authority
that signed for 127.0.0.1 and for no other name. Ends when its standard input does. Every request's
path and user agent are a line of FOLDER/requests.log, with a tab between them.

How a file is answered, words in FILE.how say:

    status=N            by that status
    redirect=ADDRESS    by a redirect; "http:" and "https:" alone stand for the same path there
    type=TYPE           as of that content type
    gzip                compressed
    chunked             without a length
    delay=MILLISECONDS  after a while
    hold                never, with the connection left open
    closed              by nothing: the connection is closed
    truncated           by its first half
    longer              by all of it, with a length that is one too large
    huge                by itself again and again, without an end
    raw                 by nothing but its bytes, head and all
"""

import gzip
import http.server
import pathlib
import ssl
import subprocess
import sys
import tempfile
import threading
import time
import urllib.parse


def make_certificates(folder):
    """Makes the authority `ca.pem`, and `server.pem` with `server.key`."""

    def openssl(*arguments):
        subprocess.run(["openssl", *arguments], cwd=folder, check=True, capture_output=True)

    new_key = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes"]
    openssl("req", "-x509", *new_key, "-keyout", "ca.key", "-out", "ca.pem", "-days", "2",
            "-subj", "/CN=Test authority")
    openssl("req", *new_key, "-keyout", "server.key", "-out", "server.csr", "-subj", "/CN=Test")
    (folder / "names").write_text("subjectAltName=IP:127.0.0.1\n")
    openssl("x509", "-req", "-in", "server.csr", "-CA", "ca.pem", "-CAkey", "ca.key",
            "-CAcreateserial", "-days", "2", "-extfile", "names", "-out", "server.pem")


class Handler(http.server.BaseHTTPRequestHandler):
    root = None
    ports = {}
    log_lock = threading.Lock()

    def log_message(self, *_):
        pass

    def do_GET(self):
        self.close_connection = True
        path = urllib.parse.urlsplit(self.path).path
        with self.log_lock, open(self.root / "requests.log", "a") as log:
            log.write(f"{self.path}\t{self.headers['User-Agent']}\n")
        file = self.root / urllib.parse.unquote(path).lstrip("/")
        how_file = pathlib.Path(f"{file}.how")
        words = how_file.read_text().split() if how_file.is_file() else []
        how = dict(word.partition("=")[::2] for word in words)

        time.sleep(int(how.get("delay", 0)) / 1000)
        while "hold" in how:
            time.sleep(60)
        if "closed" in how:
            return
        if "raw" in how:
            self.wfile.write(file.read_bytes())
            return
        status = int(how.get("status", 200 if file.is_file() else 404))
        body = file.read_bytes() if file.is_file() else b"missing"
        fields = {"Content-Type": how.get("type", "text/plain"), "Connection": "close"}
        if "redirect" in how:
            status, target = 302, how["redirect"]
            if target in ("http:", "https:"):
                target = f"{target}//127.0.0.1:{self.ports[target]}{self.path}"
            fields["Location"] = target
        if "gzip" in how:
            body = gzip.compress(body)
            fields["Content-Encoding"] = "gzip"
        if "chunked" in how:
            fields["Transfer-Encoding"] = "chunked"
            body = b"%x\r\n%s\r\n0\r\n\r\n" % (len(body), body)
        elif "huge" not in how:
            fields["Content-Length"] = str(len(body) + ("longer" in how))
        self.send_response(status)
        for name, value in fields.items():
            self.send_header(name, value)
        self.end_headers()
        self.wfile.write(body[: len(body) // 2] if "truncated" in how else body)
        while "huge" in how:
            self.wfile.write(body)


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True
    request_queue_size = 256

    def handle_error(self, *_):
        """The other side may go whenever it likes."""


class SecureServer(Server):
    def __init__(self, address, handler, context):
        super().__init__(address, handler)
        self.context = context

    def finish_request(self, request, client_address):
        """On the request's own thread, unlike what accepts the connection."""
        with self.context.wrap_socket(request, server_side=True) as secured:
            super().finish_request(secured, client_address)


def main():
    Handler.protocol_version = "HTTP/1.1"
    Handler.root = pathlib.Path(sys.argv[1])
    with tempfile.TemporaryDirectory() as made:
        certificates = pathlib.Path(made)
        make_certificates(certificates)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificates / "server.pem", certificates / "server.key")
        address = ("127.0.0.1", 0)
        servers = {"http:": Server(address, Handler),
                   "https:": SecureServer(address, Handler, context)}
        for scheme, server in servers.items():
            Handler.ports[scheme] = server.server_address[1]
            threading.Thread(target=server.serve_forever, daemon=True).start()
        print(*Handler.ports.values(), certificates / "ca.pem", flush=True)
        sys.stdin.read()


main()
