#!/usr/bin/env python3
"""Writes the seed corpus of the zip reader fuzz target: small valid archives in the common shapes,
and truncated, damaged and hostile variants of them. Run from anywhere; output is deterministic."""
import io
import os
import struct
import sys
import zipfile
import zlib

OUT = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'fuzz', 'corpus', 'zip_reader')
DATE = (2025, 1, 2, 3, 4, 6)


class Unseekable(io.RawIOBase):
    def __init__(self, target):
        self.target = target

    def writable(self):
        return True

    def write(self, data):
        return self.target.write(data)


def python_archive(method, stream=False, folders=True):
    raw = io.BytesIO()
    with zipfile.ZipFile(Unseekable(raw) if stream else raw, 'w', method) as archive:
        if folders:
            archive.writestr(zipfile.ZipInfo('pictures/', DATE), b'')
        for name, data in (('imsmanifest.xml', b'<manifest/>\n' * 20),
                           ('pictures/a.txt', b'gallery text ' * 50),
                           ('sounds/ding.wav', bytes(range(256)) * 3)):
            info = zipfile.ZipInfo(name, DATE)
            info.compress_type = method
            archive.writestr(info, data)
    return raw.getvalue()


def raw_archive(entries, this_disk=0, central_disk=0, count=None):
    """entries: (name bytes, data bytes, dict of overrides) stored records written field by field."""
    local, central = b'', b''
    for name, data, extra in entries:
        crc = extra.get('crc', zlib.crc32(data))
        method = extra.get('method', 0)
        flags = extra.get('flags', 0)
        attr = extra.get('attr', 0o100644 << 16)
        offset = len(local)
        local += struct.pack('<IHHHHHIIIHH', 0x04034b50, 10, flags, method, 0, 0x5A22, crc,
                             len(data), len(data), len(name), 0) + name + data
        central += struct.pack('<IHHHHHHIIIHHHHHII', 0x02014b50, 0x0314, 10, flags, method, 0,
                               0x5A22, crc, len(data), len(data), len(name), 0, 0, 0, 0, attr,
                               offset) + name
    n = len(entries) if count is None else count
    end = struct.pack('<IHHHHIIH', 0x06054b50, this_disk, central_disk, n, n, len(central),
                      len(local), 0)
    return local + central + end


def main():
    os.makedirs(OUT, exist_ok=True)
    seeds = {}
    deflated = python_archive(zipfile.ZIP_DEFLATED)
    seeds['valid_deflated.zip'] = deflated
    seeds['valid_stored.zip'] = python_archive(zipfile.ZIP_STORED)
    seeds['valid_descriptors.zip'] = python_archive(zipfile.ZIP_DEFLATED, stream=True)
    seeds['valid_no_folders.zip'] = python_archive(zipfile.ZIP_DEFLATED, folders=False)
    seeds['valid_backslash.zip'] = raw_archive([(b'sounds\\a.wav', b'A', {}),
                                                (b'Folder\\Sub\\', b'', {})])
    seeds['empty_archive.zip'] = raw_archive([])
    seeds['empty_file'] = b''
    seeds['no_end_record'] = deflated[:-22]

    for cut in (10, 30, 60, len(deflated) // 2, len(deflated) - 30, len(deflated) - 1):
        seeds['truncated_%d.zip' % cut] = deflated[:cut]

    damaged = bytearray(deflated)
    for at in range(60, 90):
        damaged[at] ^= 0x55
    seeds['damaged_data.zip'] = bytes(damaged)
    seeds['bad_crc.zip'] = raw_archive([(b'a.txt', b'payload', {'crc': 0x12345678})])
    seeds['multi_disk.zip'] = raw_archive([(b'a.txt', b'a', {})], this_disk=2, central_disk=2)
    seeds['disk_mismatch.zip'] = raw_archive([(b'a.txt', b'a', {})], this_disk=1)
    seeds['count_too_high.zip'] = raw_archive([(b'a.txt', b'a', {})], count=5)
    seeds['encrypted.zip'] = raw_archive([(b'a.txt', b'0123456789ab', {'flags': 1})])
    seeds['unknown_method.zip'] = raw_archive([(b'a.bz2', b'BZh91AY', {'method': 12})])
    seeds['deflate_garbage.zip'] = raw_archive([(b'a.txt', b'\xff' * 40, {'method': 8})])
    with_prefix = b'#!/bin/sh\nexit 0\n' + deflated
    seeds['prefixed_stub.zip'] = with_prefix

    seeds['hostile_dotdot.zip'] = raw_archive([(b'ok.txt', b'ok', {}), (b'../escaped.txt', b'x', {})])
    seeds['hostile_deep_dotdot.zip'] = raw_archive([(b'a/b/../../../escaped.txt', b'x', {})])
    seeds['hostile_backslash.zip'] = raw_archive([(b'..\\escaped.txt', b'x', {})])
    seeds['hostile_absolute.zip'] = raw_archive([(b'/tmp/escaped.txt', b'x', {})])
    seeds['hostile_nul.zip'] = raw_archive([(b'ok\x00/../../escaped.txt', b'x', {})])
    seeds['hostile_symlink.zip'] = raw_archive([(b'link', b'/tmp', {'attr': 0o120777 << 16}),
                                                (b'link/escaped.txt', b'x', {})])
    seeds['odd_names.zip'] = raw_archive([(b'./a//b/./c.txt', b'c', {}), (b'./', b'', {}),
                                          (b'.', b'dot', {}), (b'C:\\x.txt', b'x', {})])

    for name, data in sorted(seeds.items()):
        with open(os.path.join(OUT, name), 'wb') as out:
            out.write(data)
    print('%d seeds written to %s' % (len(seeds), os.path.normpath(OUT)))


if __name__ == '__main__':
    sys.exit(main())
