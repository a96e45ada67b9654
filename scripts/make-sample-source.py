#!/usr/bin/env python3
"""Writes samples/source: the gallery data of the sample collection (samples/collection).

The source holds gallery_categories.xml, one or more zip packages per category (an imsmanifest.xml
with LOM metadata plus small pictures, sounds and a page) and German string catalogues, with a
French one for the maps. Everything is drawn or synthesised here, and the zip entries carry a fixed
date, so that running the script again gives the same bytes. Run from anywhere; it replaces the
folder's generated files and leaves nothing else behind.

    python3 scripts/make-sample-source.py [--out DIR]    (default: samples/source)
"""
import argparse
import io
import math
import os
import shutil
import struct
import sys
import zipfile
import zlib
from xml.sax.saxutils import escape, quoteattr

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), '..'))
OUT = os.path.join(ROOT, 'samples', 'source')

# Must stay the identities of samples/collection/configuration.xml.
GALLERY_GUID = '5a0f3c2e-8d41-4b6a-9c57-2e1d7b9f0a31'
CATEGORY_GUIDS = {
    'animals': '0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e01',
    'maps': '0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e02',
    'sounds': '0c9b8f1e-3a52-4d1c-8e6f-7b2a4c9d1e03',
}

ZIP_DATE = (2026, 3, 2, 9, 30, 0)
VERSION = '1.0'
STRINGS_VERSION = '1.0'

NS_IMSCP = 'http://www.imsglobal.org/xsd/imscp_v1p1'
NS_ADLCP = 'http://www.adlnet.org/xsd/adlcp_v1p3'
NS_LOM = 'http://ltsc.ieee.org/xsd/LOM'
NS_GALLERY = 'http://schemas.curatool.invalid/gallery/2006'


# --- pictures ---------------------------------------------------------------------------------

def png(width, height, pixel):
    """An 8-bit RGB PNG; pixel(x, y) gives an (r, g, b) tuple."""
    rows = bytearray()
    for y in range(height):
        rows.append(0)  # filter: none
        for x in range(width):
            rows.extend(pixel(x, y))

    def chunk(kind, data):
        body = kind + data
        return struct.pack('>I', len(data)) + body + struct.pack('>I', zlib.crc32(body) & 0xFFFFFFFF)

    header = struct.pack('>IIBBBBB', width, height, 8, 2, 0, 0, 0)
    return (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', header) +
            chunk(b'IDAT', zlib.compress(bytes(rows), 9)) + chunk(b'IEND', b''))


SIZE = 48


def inside_ellipse(x, y, cx, cy, rx, ry):
    return ((x - cx) / rx) ** 2 + ((y - cy) / ry) ** 2 <= 1.0


def inside_triangle(x, y, a, b, c):
    def side(p, q):
        return (x - q[0]) * (p[1] - q[1]) - (p[0] - q[0]) * (y - q[1])
    d1, d2, d3 = side(a, b), side(b, c), side(c, a)
    return not ((d1 < 0 or d2 < 0 or d3 < 0) and (d1 > 0 or d2 > 0 or d3 > 0))


def mammal(fur, background, ears, ear_height):
    """A face: round head, two ears (pointed, long or floppy), eyes and a nose."""
    darker = tuple(c * 2 // 3 for c in fur)

    def pixel(x, y):
        if ears == 'floppy' and (inside_ellipse(x, y, 10, 27, 4, ear_height) or
                                 inside_ellipse(x, y, 38, 27, 4, ear_height)):
            return darker
        if inside_ellipse(x, y, 18, 26, 1.6, 2.2) or inside_ellipse(x, y, 30, 26, 1.6, 2.2):
            return (20, 20, 20)
        if inside_ellipse(x, y, 24, 33, 2.5, 1.8):
            return (200, 80, 90)
        if inside_ellipse(x, y, 24, 29, 14, 13):
            return fur
        if ears == 'pointed':
            if (inside_triangle(x, y, (11, 22), (17, 17), (12, 22 - ear_height)) or
                    inside_triangle(x, y, (37, 22), (31, 17), (36, 22 - ear_height))):
                return fur
        elif ears == 'long' and (inside_ellipse(x, y, 17, 19 - ear_height / 2, 3.5, ear_height / 2 + 2) or
                                 inside_ellipse(x, y, 31, 19 - ear_height / 2, 3.5, ear_height / 2 + 2)):
            return fur
        return background
    return png(SIZE, SIZE, pixel)


def bird(feathers, beak, background):
    """A bird in profile: body, head, eye, beak and legs."""
    def pixel(x, y):
        if inside_ellipse(x, y, 30, 14, 1.5, 1.5):
            return (10, 10, 10)
        if inside_triangle(x, y, (34, 13), (34, 18), (42, 16)):
            return beak
        if inside_ellipse(x, y, 29, 16, 6, 6) or inside_ellipse(x, y, 22, 28, 12, 9):
            return feathers
        if (x in (20, 25)) and 36 <= y <= 42:
            return beak
        return background
    return png(SIZE, SIZE, pixel)


def noise(seed):
    """A fixed pseudo-random field, so that the maps look the same on every run."""
    state = [seed]

    def next_value():
        state[0] = (state[0] * 1103515245 + 12345) & 0x7FFFFFFF
        return state[0] / 0x7FFFFFFF
    return next_value


def map_picture(blobs, seed):
    """Sea with land masses made of overlapping ellipses, coastlines roughened by noise."""
    rand = noise(seed)
    jitter = [[rand() * 0.25 for _ in range(SIZE)] for _ in range(SIZE)]

    def pixel(x, y):
        level = -1.0
        for cx, cy, rx, ry in blobs:
            d = ((x - cx) / rx) ** 2 + ((y - cy) / ry) ** 2
            level = max(level, 1.0 - d)
        level += jitter[y][x] - 0.12
        if level > 0.55:
            return (120, 110, 70)
        if level > 0.15:
            return (70, 150, 70)
        if level > 0.0:
            return (230, 220, 160)
        if (x % 12 == 0) or (y % 12 == 0):
            return (60, 110, 190)
        return (40, 90, 170)
    return png(SIZE, SIZE, pixel)


# --- sounds -----------------------------------------------------------------------------------

RATE = 8000


def wav(samples):
    """8-bit mono PCM; samples are floats in -1..1."""
    data = bytes(max(0, min(255, int(round(128 + 127 * s)))) for s in samples)
    fmt = struct.pack('<HHIIHH', 1, 1, RATE, RATE, 1, 8)
    body = b'WAVE' + b'fmt ' + struct.pack('<I', len(fmt)) + fmt + b'data' + struct.pack('<I', len(data)) + data
    return b'RIFF' + struct.pack('<I', len(body)) + body


def bell():
    n = int(RATE * 0.4)
    return wav([math.exp(-6 * i / n) * (0.7 * math.sin(2 * math.pi * 880 * i / RATE) +
                                        0.3 * math.sin(2 * math.pi * 2212 * i / RATE)) for i in range(n)])


def drum():
    n = int(RATE * 0.25)
    rand = noise(7)
    return wav([math.exp(-12 * i / n) * (0.6 * math.sin(2 * math.pi * 90 * i / RATE) + 0.4 * (2 * rand() - 1))
                for i in range(n)])


def whistle():
    n = int(RATE * 0.35)
    phase, out = 0.0, []
    for i in range(n):
        phase += 2 * math.pi * (1400 + 900 * i / n) / RATE
        out.append(0.6 * math.sin(phase) * min(1.0, 8 * min(i, n - i) / n))
    return wav(out)


def rain():
    n = int(RATE * 0.5)
    rand = noise(11)
    last, out = 0.0, []
    for i in range(n):
        last = 0.7 * last + 0.3 * (2 * rand() - 1)  # softened noise
        out.append(0.8 * last * min(1.0, 10 * min(i, n - i) / n))
    return wav(out)


# --- a page -----------------------------------------------------------------------------------

COMPASS_HTML = '''<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<title>Reading a compass</title>
<style>
body { font-family: sans-serif; margin: 1em; }
.rose { width: 160px; height: 160px; position: relative; border: 3px solid #456; border-radius: 50%; }
.rose span { position: absolute; font-weight: bold; }
</style>
</head>
<body>
<h1>Reading a compass</h1>
<div class="rose">
<span style="left:74px;top:4px">N</span><span style="left:146px;top:70px">E</span>
<span style="left:74px;top:136px">S</span><span style="left:4px;top:70px">W</span>
</div>
<p>Hold the compass flat. Turn until the needle points to <b>N</b>. Which way is the sea on the map?</p>
<p><button onclick="document.getElementById('a').hidden=false">Show the answer</button></p>
<p id="a" hidden>West: the coast lies to the left of the north arrow.</p>
</body>
</html>
'''


# --- the gallery's content --------------------------------------------------------------------

# Content file names are flat and unique across packages: they land directly in the gallery
# folder, and a removal cleans up only that level, so files in sub-folders would stay behind.
# One package per entry: its file in the source, manifest identifier, and a tree of categories.
# A category: (identifier, English title, German title, keywords, children, items); an item:
# (identifier, file, English title, German title, keywords, format, bytes).
def animal_packages():
    mammals = [
        ('zsc.animals.mammals.cat', 'cat.png', 'Cat', 'Katze', ['cat', 'pet'], 'image/png',
         mammal((230, 150, 60), (240, 235, 210), 'pointed', 9)),
        ('zsc.animals.mammals.dog', 'dog.png', 'Dog', 'Hund', ['dog', 'pet'], 'image/png',
         mammal((170, 120, 70), (210, 230, 240), 'floppy', 10)),
        ('zsc.animals.mammals.rabbit', 'rabbit.png', 'Rabbit', 'Kaninchen', ['rabbit', 'pet'],
         'image/png', mammal((200, 200, 200), (200, 235, 190), 'long', 16)),
        ('zsc.animals.mammals.fox', 'fox.png', 'Fox', 'Fuchs', ['fox', 'forest'], 'image/png',
         mammal((210, 90, 30), (190, 220, 170), 'pointed', 13)),
    ]
    birds = [
        ('zsc.animals.birds.owl', 'owl.png', 'Owl', 'Eule', ['owl', 'night'], 'image/png',
         bird((130, 100, 70), (220, 180, 60), (30, 40, 80))),
        ('zsc.animals.birds.duck', 'duck.png', 'Duck', 'Ente', ['duck', 'water'], 'image/png',
         bird((240, 240, 240), (250, 160, 20), (120, 180, 230))),
        ('zsc.animals.birds.gull', 'gull.png', 'Seagull', 'Möwe', ['gull', 'sea'], 'image/png',
         bird((225, 225, 230), (230, 200, 40), (90, 150, 210))),
    ]
    root = ('zsc.animals', 'Animals', 'Tiere', ['animals'])
    return [
        ('animals/mammals.zip', 'zsc.pkg.animals.mammals', 'Animals: mammals', 'Tiere: Säugetiere',
         [root + ([('zsc.animals.mammals', 'Mammals', 'Säugetiere', ['mammals'], [], mammals)], [])]),
        ('animals/birds.zip', 'zsc.pkg.animals.birds', 'Animals: birds', 'Tiere: Vögel',
         [root + ([('zsc.animals.birds', 'Birds', 'Vögel', ['birds'], [], birds)], [])]),
    ]


MAP_FRENCH = {'zsc.maps': 'Cartes', 'zsc.maps.world': 'Le monde', 'zsc.maps.continent': 'Un continent',
              'zsc.maps.island': 'Une île', 'zsc.maps.compass': 'Lire une boussole'}


def map_packages():
    items = [
        ('zsc.maps.world', 'world.png', 'The world', 'Die Welt', ['world', 'continents'], 'image/png',
         map_picture([(10, 14, 8, 7), (14, 32, 5, 9), (30, 13, 9, 6), (33, 28, 6, 8), (41, 38, 4, 3)], 3)),
        ('zsc.maps.continent', 'continent.png', 'A continent', 'Ein Kontinent', ['continent', 'coast'],
         'image/png', map_picture([(24, 22, 17, 12), (14, 36, 6, 7), (36, 10, 6, 4)], 5)),
        ('zsc.maps.island', 'island.png', 'An island', 'Eine Insel', ['island', 'sea'], 'image/png',
         map_picture([(24, 24, 11, 8), (31, 28, 5, 6)], 9)),
        ('zsc.maps.compass', 'compass.html', 'Reading a compass', 'Einen Kompass lesen',
         ['compass', 'directions'], 'text/html', COMPASS_HTML.encode('utf-8')),
    ]
    return [('maps/maps.zip', 'zsc.pkg.maps', 'Maps', 'Karten',
             [('zsc.maps', 'Maps', 'Karten', ['maps', 'geography'], [], items)])]


def sound_packages():
    items = [
        ('zsc.sounds.bell', 'bell.wav', 'Bell', 'Glocke', ['bell', 'ring'], 'audio/x-wav', bell()),
        ('zsc.sounds.drum', 'drum.wav', 'Drum', 'Trommel', ['drum', 'music'], 'audio/x-wav', drum()),
        ('zsc.sounds.whistle', 'whistle.wav', 'Whistle', 'Pfeife', ['whistle', 'signal'], 'audio/x-wav',
         whistle()),
        ('zsc.sounds.rain', 'rain.wav', 'Rain', 'Regen', ['rain', 'weather'], 'audio/x-wav', rain()),
    ]
    return [('sounds/sounds.zip', 'zsc.pkg.sounds', 'Sounds', 'Geräusche',
             [('zsc.sounds', 'Sounds', 'Geräusche', ['sounds', 'audio'], [], items)])]


CATEGORIES = [
    # short id, English title, German title, packages
    ('animals', 'Animals', 'Tiere', animal_packages()),
    ('maps', 'Maps', 'Karten', map_packages()),
    ('sounds', 'Sounds', 'Geräusche', sound_packages()),
]


# --- imsmanifest.xml --------------------------------------------------------------------------

class Counter:
    def __init__(self):
        self.value = 0

    def next(self):
        self.value += 1
        return 'id%d' % self.value


def lom_strings(pairs, indent):
    return ''.join('%s<lom:string language="%s">%s</lom:string>\n' % (indent, language, escape(text))
                   for language, text in pairs)


def lom(identifier, title, keywords, fmt='', version='', browser=None, indent='      '):
    i = indent
    out = [i + '<lom:lom>\n',
           i + ' <lom:general>\n',
           i + '  <lom:identifier><lom:category>URI</lom:category><lom:entry>%s</lom:entry></lom:identifier>\n'
           % escape(identifier),
           i + '  <lom:title>\n', lom_strings([('en', title)], i + '   '), i + '  </lom:title>\n',
           i + '  <lom:description>\n', lom_strings([('en', title)], i + '   '), i + '  </lom:description>\n']
    for word in keywords:
        out.append(i + '  <lom:keyword><lom:string language="en">%s</lom:string></lom:keyword>\n' % escape(word))
    out.append(i + ' </lom:general>\n')
    if fmt:
        out.append(i + ' <lom:technical>\n')
        out.append(i + '  <lom:format>%s</lom:format>\n' % fmt)
        if browser:
            name, minimum = browser
            out.append(i + '  <lom:requirement><lom:orComposite>'
                       '<lom:type><lom:source>LOMv1.0</lom:source><lom:value>browser</lom:value></lom:type>'
                       '<lom:name><lom:source>LOMv1.0</lom:source><lom:value>%s</lom:value></lom:name>'
                       '<lom:minimumVersion>%s</lom:minimumVersion>'
                       '</lom:orComposite></lom:requirement>\n' % (name, minimum))
        out.append(i + ' </lom:technical>\n')
    out.append(i + ' <lom:rights>\n' +
               i + '  <lom:cost><lom:source>LOMv1.0</lom:source><lom:value>no</lom:value></lom:cost>\n' +
               i + '  <lom:copyrightAndOtherRestrictions><lom:source>LOMv1.0</lom:source>'
               '<lom:value>yes</lom:value></lom:copyrightAndOtherRestrictions>\n' +
               i + '  <lom:description><lom:string language="en">Free for use in the classroom'
               '</lom:string></lom:description>\n' +
               i + ' </lom:rights>\n')
    out.append(i + ' <lom:lifeCycle>\n')
    if version:
        out.append(i + '  <lom:version><lom:string language="en">%s</lom:string></lom:version>\n' % version)
    out.append(i + '  <lom:status><lom:source>LOMv1.0</lom:source><lom:value>final</lom:value></lom:status>\n')
    out.append(i + ' </lom:lifeCycle>\n')
    out.append(i + '</lom:lom>\n')
    return ''.join(out)


def manifest_xml(package_id, package_title, tree):
    ids = Counter()
    resources = []
    manifest_id = ids.next()
    organization_id = ids.next()

    def category(node, depth):
        identifier, title, _, keywords, children, items = node
        pad = ' ' * (2 * depth + 1)
        out = ['%s<item identifier="%s">\n' % (pad, ids.next()),
               '%s  <title>%s</title>\n' % (pad, escape(title))]
        for child in children:
            out.append(category(child, depth + 1))
        for item_id, href, item_title, _, item_keywords, fmt, _ in items:
            ref = ids.next()
            out.append('%s  <item identifier="%s" identifierref="%s">\n' % (pad, ref, ids.next()))
            out.append('%s    <title>%s</title>\n' % (pad, escape(item_title)))
            browser = ('any', '4.0') if fmt == 'text/html' else None
            out.append('%s    <metadata>\n%s%s    </metadata>\n' %
                       (pad, lom(item_id, item_title, item_keywords, fmt, browser=browser,
                                 indent=pad + '      '), pad))
            out.append('%s  </item>\n' % pad)
            resources.append(('id%d' % (int(ref[2:]) + 1), href))
        out.append('%s  <metadata>\n%s%s  </metadata>\n' %
                   (pad, lom(identifier, title, keywords, indent=pad + '    '), pad))
        out.append('%s</item>\n' % pad)
        return ''.join(out)

    body = ''.join(category(node, 1) for node in tree)
    head = ('<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
            '<manifest identifier="%s" version="2006-01" zoltagallery:filesource="ZOLTA sample generator 1.0"'
            ' xmlns="%s" xmlns:adlcp="%s" xmlns:lom="%s" xmlns:zoltagallery="%s">\n'
            % (manifest_id, NS_IMSCP, NS_ADLCP, NS_LOM, NS_GALLERY))
    out = [head,
           ' <zoltagallery:stringversions>\n',
           lom_strings([('en', STRINGS_VERSION)], '  '),
           ' </zoltagallery:stringversions>\n',
           ' <metadata>\n  <schema>ADL SCORM</schema>\n  <schemaversion>CAM 1.3</schemaversion>\n',
           lom(package_id, package_title, ['sample'], version=VERSION, indent='  '),
           ' </metadata>\n',
           ' <organizations default="%s">\n' % organization_id,
           '  <organization identifier="%s" zoltagallery:readonly="false">\n' % organization_id,
           '   <title>ZOLTA Sample Collection</title>\n',
           body,
           '   <metadata>\n',
           lom(GALLERY_GUID, 'ZOLTA Sample Collection', ['sample'], indent='    '),
           '   </metadata>\n',
           '  </organization>\n',
           ' </organizations>\n',
           ' <resources>\n']
    for identifier, href in resources:
        out.append('  <resource identifier="%s" type="webcontent" adlcp:scormType="asset" href=%s>'
                   '<file href=%s/></resource>\n' % (identifier, quoteattr(href), quoteattr(href)))
    out.append(' </resources>\n</manifest>\n')
    return ''.join(out).encode('utf-8')


# --- string catalogues ------------------------------------------------------------------------

def walk(tree):
    """(identifier, English, German) of every category and item, depth first."""
    for identifier, title, german, _, children, items in tree:
        yield identifier, title, german
        yield from walk(children)
        for item_id, _, item_title, item_german, _, _, _ in items:
            yield item_id, item_title, item_german


def catalogue_xml(language, packages, translate):
    out = ['<?xml version="1.0" encoding="UTF-8"?>\n',
           '<i18n xmlns="%s" language="%s">\n' % (NS_GALLERY, language)]
    for _, package_id, _, _, tree in packages:
        out.append(' <manifest id="%s" languagestringversion="%s">\n' % (package_id, STRINGS_VERSION))
        for identifier, english, german in walk(tree):
            text = translate(identifier, english, german)
            if text:
                out.append('  <item id="%s"><title>%s</title></item>\n' % (identifier, escape(text)))
        out.append(' </manifest>\n')
    out.append('</i18n>\n')
    return ''.join(out).encode('utf-8')


# --- writing ----------------------------------------------------------------------------------

def zip_bytes(entries):
    """A deflated archive with a fixed date on every entry and folder entries for every folder."""
    raw = io.BytesIO()
    folders = sorted({name[:i + 1] for name, _ in entries for i, c in enumerate(name) if c == '/'})
    with zipfile.ZipFile(raw, 'w', zipfile.ZIP_DEFLATED) as archive:
        for folder in folders:
            info = zipfile.ZipInfo(folder, ZIP_DATE)
            info.external_attr = (0o40755 << 16) | 0x10
            archive.writestr(info, b'')
        for name, data in entries:
            info = zipfile.ZipInfo(name, ZIP_DATE)
            info.compress_type = zipfile.ZIP_DEFLATED
            info.external_attr = 0o100644 << 16
            archive.writestr(info, data)
    return raw.getvalue()


def write(relative, data, written):
    path = os.path.join(OUT, relative)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, 'wb') as f:
        f.write(data)
    written[relative] = data


def categories_xml(entries):
    out = ['<?xml version="1.0" encoding="UTF-8"?>\n',
           '<gallery>\n',
           ' <categories id="%s">\n' % GALLERY_GUID]
    for short_id, english, german, files, strings, size, disksize, count in entries:
        out.append('  <category id="%s" version="%s" size="%d" disksize="%d" count="%d">\n'
                   % (CATEGORY_GUIDS[short_id], VERSION, size, disksize, count))
        out.append('   <title>\n')
        out.append('    <string language="en">%s</string>\n' % escape(english))
        out.append('    <string language="de">%s</string>\n' % escape(german))
        out.append('   </title>\n   <files>\n')
        for name, package_id, languages in files:
            strings_attribute = ';'.join('%s:%s' % (language, STRINGS_VERSION) for language in languages)
            out.append('    <file id="%s" version="%s" strings="%s">%s</file>\n'
                       % (package_id, VERSION, strings_attribute, escape(name)))
        out.append('   </files>\n   <strings>\n')
        for language, name in strings:
            out.append('    <string language="%s">%s</string>\n' % (language, escape(name)))
        out.append('   </strings>\n  </category>\n')
    out.append(' </categories>\n')
    # A package of an earlier edition, merged into maps.zip since: taken out wherever it is installed.
    out.append(' <mandatory>\n  <removals>\n   <manifest id="zsc.pkg.maps.draft"/>\n  </removals>\n'
               ' </mandatory>\n')
    out.append('</gallery>\n')
    return ''.join(out).encode('utf-8')


def main():
    global OUT
    parser = argparse.ArgumentParser(description='Writes the sample gallery source.')
    parser.add_argument('--out', default=OUT, help='folder to (re)write, default samples/source')
    OUT = os.path.abspath(parser.parse_args().out)
    if os.path.isdir(OUT) and os.listdir(OUT):
        if not os.path.isfile(os.path.join(OUT, 'gallery_categories.xml')):
            sys.exit('%s is not empty and holds no gallery source: not replacing it' % OUT)
        shutil.rmtree(OUT)
    written = {}
    entries = []
    for short_id, english, german, packages in CATEGORIES:
        files, size, disksize, count = [], 0, 0, 0
        for name, package_id, title, _, tree in packages:
            content = [(href, data) for node in tree for href, data in package_items(node)]
            manifest = manifest_xml(package_id, title, tree)
            archive = zip_bytes([('imsmanifest.xml', manifest)] + content)
            write(name, archive, written)
            languages = ['en', 'de'] + (['fr'] if short_id == 'maps' else [])
            files.append((name, package_id, languages))
            size += len(archive)
            disksize += len(manifest) + sum(len(data) for _, data in content)
            count += len(content)
        strings = [('de', 'i18n/%s_de.zip' % short_id)]
        write(strings[0][1], zip_bytes([('i18n.xml', catalogue_xml('de', packages,
                                                                   lambda _i, _e, de: de))]), written)
        if short_id == 'maps':
            strings.append(('fr', 'i18n/maps_fr.xml'))
            write(strings[1][1], catalogue_xml('fr', packages, lambda i, _e, _d: MAP_FRENCH.get(i)), written)
        entries.append((short_id, english, german, files, strings, size, disksize, count))
    write('gallery_categories.xml', categories_xml(entries), written)
    total = sum(len(data) for data in written.values())
    shown = os.path.relpath(OUT)
    print('wrote %d files, %d bytes, to %s' % (len(written), total, OUT if shown.startswith('..') else shown))
    return 0


def package_items(node):
    _, _, _, _, children, items = node
    for child in children:
        yield from package_items(child)
    for _, href, _, _, _, _, data in items:
        yield href, data


if __name__ == '__main__':
    sys.exit(main())
