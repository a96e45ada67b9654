#!/usr/bin/env python3
"""A loopback SOCKS 5 proxy that wants user name and password (RFC 1928, RFC 1929).

Arguments: user, password, log file. Prints its port on the first line of standard output.
Each authentication attempt is logged as "auth <user> ok|refused".
"""
import select
import socket
import socketserver
import struct
import sys

USER, PASSWORD, LOG = sys.argv[1].encode(), sys.argv[2].encode(), sys.argv[3]


def receive(sock, count):
    data = b""
    while len(data) < count:
        piece = sock.recv(count - len(data))
        if not piece:
            raise ConnectionError("closed")
        data += piece
    return data


def log(line):
    with open(LOG, "a") as out:
        out.write(line + "\n")


class Handler(socketserver.BaseRequestHandler):
    def handle(self):
        sock = self.request
        version, count = receive(sock, 2)
        methods = receive(sock, count)
        if version != 5 or 2 not in methods:
            sock.sendall(b"\x05\xff")
            return
        sock.sendall(b"\x05\x02")
        _, length = receive(sock, 2)
        user = receive(sock, length)
        (length,) = receive(sock, 1)
        password = receive(sock, length)
        good = user == USER and password == PASSWORD
        log("auth %s %s" % (user.decode(errors="replace"), "ok" if good else "refused"))
        sock.sendall(b"\x01\x00" if good else b"\x01\x01")
        if not good:
            return
        _, command, _, kind = receive(sock, 4)
        if kind == 1:
            host = socket.inet_ntoa(receive(sock, 4))
        elif kind == 3:
            (length,) = receive(sock, 1)
            host = receive(sock, length).decode()
        else:
            return
        (port,) = struct.unpack("!H", receive(sock, 2))
        if command != 1:
            return
        try:
            upstream = socket.create_connection((host, port), timeout=10)
        except OSError:
            sock.sendall(b"\x05\x05\x00\x01\x00\x00\x00\x00\x00\x00")
            return
        sock.sendall(b"\x05\x00\x00\x01\x7f\x00\x00\x01" + struct.pack("!H", port))
        with upstream:
            pair = [sock, upstream]
            while True:
                ready, _, _ = select.select(pair, [], [], 60)
                if not ready:
                    return
                for source in ready:
                    data = source.recv(65536)
                    if not data:
                        return
                    (upstream if source is sock else sock).sendall(data)


class Server(socketserver.ThreadingTCPServer):
    daemon_threads = True
    allow_reuse_address = True


if __name__ == "__main__":
    with Server(("127.0.0.1", 0), Handler) as server:
        print(server.server_address[1], flush=True)
        server.serve_forever()
