#!/usr/bin/env python3
"""A loopback HTTP server that misbehaves on request, for the downloader's tests.

Prints its port on the first line of standard output, then serves until killed. Each request
line received is appended to the log file given as the first argument. The path picks the
behaviour; see REPLIES below.

Options after the log file serve a folder as a gallery source would be served: --folder DIR
serves its files for paths of no scripted reply, --delay MS holds every reply back that long,
--stall NAME (repeatable) sends half of that file and then nothing more, --missing NAME (repeatable) gives it a
404, and --proxy-auth USER:PASS makes requests for whole URLs (to a proxy) need those Basic
credentials.
"""
import base64
import os
import socket
import socketserver
import sys
import time
import urllib.parse

ARGS = sys.argv[1:]
LOG = ARGS[0] if ARGS and not ARGS[0].startswith("--") else None
FOLDER = None
DELAY = 0.0
STALLED = set()
MISSING = set()
PROXY_AUTH = None
_index = 1 if LOG else 0
while _index + 1 < len(ARGS):
    _name, _value = ARGS[_index], ARGS[_index + 1]
    if _name == "--folder":
        FOLDER = _value
    elif _name == "--delay":
        DELAY = int(_value) / 1000.0
    elif _name == "--stall":
        STALLED.add(_value)
    elif _name == "--missing":
        MISSING.add(_value)
    elif _name == "--proxy-auth":
        PROXY_AUTH = b"\r\nProxy-Authorization: Basic " + base64.b64encode(_value.encode()) + b"\r\n"
    _index += 2


def reply(sock, status, body=b"", headers=None):
    head = "HTTP/1.1 %s\r\n" % status
    for name, value in (headers or {"Content-Length": str(len(body))}).items():
        head += "%s: %s\r\n" % (name, value)
    sock.sendall(head.encode() + b"\r\n" + body)


def echo(sock, request):
    reply(sock, "200 OK", request)


def redirect(sock, request):
    reply(sock, "302 Found", b"moved", {"Location": "/echo", "Content-Length": "5"})


def missing(sock, request):
    reply(sock, "404 Not Found", b"<html>no such file</html>")


def empty(sock, request):
    reply(sock, "200 OK")


def created(sock, request):
    reply(sock, "201 Created", b"made")


def chunked(sock, request):
    reply(sock, "200 OK", b"5\r\nhello\r\n1;ext=1\r\n,\r\n6\r\n world\r\n0\r\n\r\n",
          {"Transfer-Encoding": "chunked"})


def until_close(sock, request):
    reply(sock, "200 OK", b"no length, ends with the connection", {"Content-Type": "text/plain"})


def trickle(sock, request):
    # 13 pieces two seconds apart: 24 s in all, never 20 s of silence.
    pieces = 13
    reply(sock, "200 OK", b"", {"Content-Length": str(pieces * 100)})
    for index in range(pieces):
        if index:
            time.sleep(2)
        sock.sendall(bytes([65 + index]) * 100)


def slow_trickle(sock, request):
    # One byte every fifth of a second: never idle, but far below any sane rate.
    reply(sock, "200 OK", b"", {"Content-Length": "100000"})
    for _ in range(300):
        time.sleep(0.2)
        sock.sendall(b"s")


def endless(sock, request):
    # No length, and no end (up to a cap, should the client never stop reading).
    reply(sock, "200 OK", b"", {"Content-Type": "application/octet-stream"})
    piece = b"e" * 65536
    for _ in range(8192):
        sock.sendall(piece)


def huge_length(sock, request):
    reply(sock, "200 OK", b"z" * 4096, {"Content-Length": str(10 ** 15)})
    time.sleep(5)


def stall_header(sock, request):
    time.sleep(40)


def stall_body(sock, request):
    reply(sock, "200 OK", b"x" * 300, {"Content-Length": "1000"})
    time.sleep(40)


def drop(sock, request):
    reply(sock, "200 OK", b"y" * 300, {"Content-Length": "1000"})


def garbage(sock, request):
    sock.sendall(b"SSH-2.0-OpenSSH_9.0\r\nthis is no HTTP at all\r\n\r\nbody")


def short_length(sock, request):
    # Announces 5 bytes, sends 20: only the announced ones belong to the reply.
    reply(sock, "200 OK", b"12345abcdefghijklmno", {"Content-Length": "5"})


def close_at_once(sock, request):
    pass


REPLIES = {
    "/echo": echo,
    "/redirect": redirect,
    "/missing": missing,
    "/empty.zip": empty,
    "/created": created,
    "/chunked": chunked,
    "/until-close": until_close,
    "/trickle": trickle,
    "/stall-header": stall_header,
    "/slow-trickle": slow_trickle,
    "/endless": endless,
    "/huge-length": huge_length,
    "/stall-body": stall_body,
    "/drop": drop,
    "/garbage": garbage,
    "/short-length": short_length,
    "/close": close_at_once,
}


def from_folder(sock, path):
    name = urllib.parse.unquote(path.lstrip("/"))
    full = os.path.join(FOLDER, name)
    if name in MISSING or ".." in name.split("/") or not os.path.isfile(full):
        missing(sock, None)
        return
    with open(full, "rb") as source:
        body = source.read()
    if name in STALLED:
        reply(sock, "200 OK", body[: len(body) // 2], {"Content-Length": str(len(body))})
        time.sleep(60)
        return
    reply(sock, "200 OK", body)


class Handler(socketserver.BaseRequestHandler):
    def handle(self):
        sock = self.request
        request = b""
        while b"\r\n\r\n" not in request:
            piece = sock.recv(4096)
            if not piece:
                return
            request += piece
        first = request.split(b"\r\n", 1)[0].decode("latin-1")
        if LOG:
            with open(LOG, "a") as log:
                log.write(first + "\n")
        target = first.split(" ")[1] if " " in first else "/"
        if DELAY:
            time.sleep(DELAY)
        if "://" in target and PROXY_AUTH and PROXY_AUTH not in request:
            reply(sock, "407 Proxy Authentication Required", b"who are you",
                  {"Proxy-Authenticate": 'Basic realm="test"', "Content-Length": "11"})
            return
        if "://" in target and b"/proxy-auth" in target.encode():
            # Acting as a proxy that wants user:pass, and answers 407 to anything else.
            if b"\r\nProxy-Authorization: Basic dXNlcjpwYXNz\r\n" in request:
                reply(sock, "200 OK", b"through the proxy")
            else:
                reply(sock, "407 Proxy Authentication Required", b"who are you",
                      {"Proxy-Authenticate": 'Basic realm="test"', "Content-Length": "11"})
            return
        path = target.split("?", 1)[0]
        if "://" in path:
            path = "/" + path.split("://", 1)[1].split("/", 1)[-1]
        try:
            if FOLDER and path not in REPLIES:
                from_folder(sock, path)
            else:
                REPLIES.get(path, missing)(sock, request)
        except OSError:
            pass


class Server(socketserver.ThreadingTCPServer):
    daemon_threads = True
    allow_reuse_address = True
    # Room for many connections arriving at once: a full backlog costs a client a second.
    request_queue_size = 64


if __name__ == "__main__":
    with Server(("127.0.0.1", 0), Handler) as server:
        print(server.server_address[1], flush=True)
        server.serve_forever()
