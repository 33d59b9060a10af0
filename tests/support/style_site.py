#!/usr/bin/env python3
"""A web server on this machine for the tests: files of a folder by http and by https.

    style_site.py FOLDER

Writes one line: the port of http, the port of https, and the file with the certificate, which is
for 127.0.0.1 and no other name. Ends when its standard input does. Every request's
path and user agent are a line of FOLDER/requests.log, with a tab between them.

How a file is answered, words in FILE.how say:

    status=N            by that status
    redirect=ADDRESS    by a redirect; "http:" and "https:" alone stand for the same path there
    type=TYPE           as of that content type
    gzip                compressed
    chunked             without a length
    delay=MILLISECONDS  after a while
    hold                once FOLDER/release exists, with the connection left open
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


def make_certificate(folder):
    """Makes `server.pem`, which vouches for itself, with `server.key`."""
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt",
                    "ec_paramgen_curve:prime256v1", "-nodes", "-keyout", "server.key",
                    "-out", "server.pem", "-days", "2", "-subj", "/CN=Test",
                    "-addext", "subjectAltName=IP:127.0.0.1"],
                   cwd=folder, check=True, capture_output=True)


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
        while "hold" in how and not (self.root / "release").exists():
            time.sleep(0.05)
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


def main():
    Handler.protocol_version = "HTTP/1.1"
    Handler.root = pathlib.Path(sys.argv[1])
    with tempfile.TemporaryDirectory() as made:
        certificate = pathlib.Path(made) / "server.pem"
        make_certificate(made)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, certificate.with_suffix(".key"))
        servers = {scheme: Server(("127.0.0.1", 0), Handler) for scheme in ("http:", "https:")}
        secure = servers["https:"]
        secure.socket = context.wrap_socket(secure.socket, server_side=True)
        for scheme, server in servers.items():
            Handler.ports[scheme] = server.server_address[1]
            threading.Thread(target=server.serve_forever, daemon=True).start()
        print(*Handler.ports.values(), certificate, flush=True)
        sys.stdin.read()


main()
