#!/usr/bin/python3
"""Draws Tavrinsonic's base skin: res/BaseSkin/layout.xml, background.png and
controls.png.

The geometry below is the one source of both the layout and the pictures:
each control's pieces are drawn over the very background they sit on, so
that the opaque copies of the skin format show no seams. Shapes are drawn at
four times the size and scaled down, which smooths their edges; slider thumbs
keep their smooth edge against the track and are cut out with the mask
colour (magenta) beyond it.

Needs Debian's python3-pil and fonts-dejavu-core:
    /usr/bin/python3 res/base_skin_source/make_base_skin.py
"""
import os
from PIL import Image, ImageDraw, ImageFont

HERE = os.path.dirname(os.path.abspath(__file__))
OUT = os.path.normpath(os.path.join(HERE, "..", "BaseSkin"))
FONT_BOLD = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf"
FONT = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf"

W, H = 176, 180
SS = 4  # supersampling factor
MASK = (255, 0, 255)

# Palette.
BG_TOP = (30, 35, 44)
BG_BOTTOM = (17, 20, 26)
PANEL = (10, 13, 18)
PANEL_EDGE = (44, 53, 66)
GROOVE = (40, 48, 60)
FACE_TOP = (45, 53, 66)
FACE_BOTTOM = (33, 39, 49)
FACE_EDGE = (58, 68, 84)
PRESSED_TOP = (22, 27, 34)
PRESSED_BOTTOM = (28, 33, 42)
ICON = (226, 232, 240)
ACCENT = (56, 152, 255)
ACCENT_DARK = (34, 110, 200)
ACCENT_LIGHT = (120, 190, 255)
DIM = (128, 142, 160)
LED_OFF = (56, 64, 78)
GREEN = (72, 200, 120)
AMBER = (240, 180, 60)

# The layout: (x, y, w, h) in skin pixels.
DISPLAY = (6, 6, 164, 56)
STATUS = (12, 12, 12, 12)
TIMER = (104, 9, 60, 18)
TITLE = (12, 29, 152, 15)
BITRATE = (12, 46, 26, 12)
SAMPLERATE = (70, 46, 34, 12)
SEEK = (10, 67, 156, 12)
PREV = (8, 86, 34, 32)
PLAY = (46, 86, 44, 32)
STOP = (94, 86, 34, 32)
NEXT = (134, 86, 34, 32)
TOGGLES = [("SHUFFLEONOFF", (8, 126, 37, 18)), ("REPEATONOFF", (49, 126, 37, 18)),
           ("EQONOFF", (90, 126, 37, 18)), ("XBASSONOFF", (131, 126, 37, 18))]
VOLDOWN = (8, 152, 20, 20)
VOLUME = (32, 156, 112, 12)
VOLUP = (148, 152, 20, 20)
SEEK_THUMB = (10, 10)
VOLUME_THUMB = (8, 12)

# Where the pieces lie in controls.png.
SHEET_SIZE = (196, 142)


def lerp(a, b, t):
    return tuple(int(round(a[i] + (b[i] - a[i]) * t)) for i in range(3))


def vertical_gradient(size, top, bottom):
    w, h = size
    image = Image.new("RGB", size)
    draw = ImageDraw.Draw(image)
    for y in range(h):
        draw.line([(0, y), (w, y)], fill=lerp(top, bottom, y / max(1, h - 1)))
    return image


class Layer:
    """A supersampled RGBA drawing the size of a rectangle."""

    def __init__(self, w, h):
        self.w, self.h = w, h
        self.image = Image.new("RGBA", (w * SS, h * SS), (0, 0, 0, 0))
        self.draw = ImageDraw.Draw(self.image)

    def s(self, *values):
        return [v * SS for v in values]

    def rounded(self, box, radius, fill=None, outline=None, width=1):
        self.draw.rounded_rectangle(self.s(*box), radius * SS, fill=fill, outline=outline, width=width * SS)

    def polygon(self, points, fill):
        self.draw.polygon([(x * SS, y * SS) for x, y in points], fill=fill)

    def ellipse(self, box, fill=None, outline=None, width=1):
        self.draw.ellipse(self.s(*box), fill=fill, outline=outline, width=width * SS)

    def rect(self, box, fill):
        self.draw.rectangle(self.s(*box), fill=fill)

    def line(self, points, fill, width):
        self.draw.line([(x * SS, y * SS) for x, y in points], fill=fill, width=int(width * SS), joint="curve")

    def arc(self, box, start, end, fill, width):
        self.draw.arc(self.s(*box), start, end, fill=fill, width=int(width * SS))

    def text(self, centre, words, size, fill, bold=True):
        font = ImageFont.truetype(FONT_BOLD if bold else FONT, size * SS)
        self.draw.text((centre[0] * SS, centre[1] * SS), words, font=font, fill=fill, anchor="mm")

    def result(self):
        return self.image.resize((self.w, self.h), Image.LANCZOS)


def over(base, layer, at=(0, 0)):
    base.paste(layer, at, layer)


# --- The background -----------------------------------------------------------------
def make_background():
    image = vertical_gradient((W, H), BG_TOP, BG_BOTTOM)
    layer = Layer(W, H)
    x, y, w, h = DISPLAY
    layer.rounded((x, y, x + w - 1, y + h - 1), 6, fill=PANEL + (255,), outline=PANEL_EDGE + (255,))
    # The seek bar's and the volume's grooves.
    for (sx, sy, sw, sh), thumb in ((SEEK, SEEK_THUMB), (VOLUME, VOLUME_THUMB)):
        cy = sy + sh / 2
        layer.rounded((sx + 2, cy - 1.5, sx + sw - 2, cy + 1.5), 1.5, fill=GROOVE + (255,))
    # Captions of the figures, which stay when the numbers hide.
    layer.text((BITRATE[0] + BITRATE[2] + 11, BITRATE[1] + 6.5), "kbps", 7, DIM + (255,), bold=False)
    layer.text((SAMPLERATE[0] + SAMPLERATE[2] + 8, SAMPLERATE[1] + 6.5), "Hz", 7, DIM + (255,), bold=False)
    layer.text((58, 18.5), "TAVRINSONIC", 6, (70, 82, 100, 255))
    # A quiet divider between the transport and the switches.
    layer.line([(14, 122), (162, 122)], fill=(38, 45, 56, 255), width=1)
    over(image, layer.result())
    return image


# --- Icons, in a box of the control's size --------------------------------------------
def icon_play(layer, cx, cy, size, fill):
    layer.polygon([(cx - size * 0.45, cy - size * 0.6), (cx - size * 0.45, cy + size * 0.6),
                   (cx + size * 0.6, cy)], fill)


def icon_pause(layer, cx, cy, size, fill):
    bar = size * 0.34
    gap = size * 0.18
    layer.rounded((cx - gap - bar, cy - size * 0.6, cx - gap, cy + size * 0.6), 0.8, fill=fill)
    layer.rounded((cx + gap, cy - size * 0.6, cx + gap + bar, cy + size * 0.6), 0.8, fill=fill)


def icon_stop(layer, cx, cy, size, fill):
    half = size * 0.5
    layer.rounded((cx - half, cy - half, cx + half, cy + half), 1.2, fill=fill)


def icon_skip(layer, cx, cy, size, fill, forward):
    sign = 1 if forward else -1
    tip = cx + sign * size * 0.55
    layer.polygon([(cx - sign * size * 0.55, cy - size * 0.5), (cx - sign * size * 0.55, cy + size * 0.5),
                   (cx + sign * size * 0.2, cy)], fill)
    layer.polygon([(cx - sign * size * 0.05, cy - size * 0.5), (cx - sign * size * 0.05, cy + size * 0.5),
                   (tip - sign * 0.2, cy)], fill)
    bar_x = tip
    layer.rect((min(bar_x, bar_x + sign * 1.6), cy - size * 0.5, max(bar_x, bar_x + sign * 1.6), cy + size * 0.5),
               fill)


def icon_shuffle(layer, cx, cy, fill):
    layer.line([(cx - 6, cy - 3), (cx - 3, cy - 3), (cx + 2, cy + 3), (cx + 5, cy + 3)], fill, 1.3)
    layer.line([(cx - 6, cy + 3), (cx - 3, cy + 3), (cx + 2, cy - 3), (cx + 5, cy - 3)], fill, 1.3)
    for y in (cy - 3, cy + 3):
        layer.polygon([(cx + 4, y - 2.2), (cx + 4, y + 2.2), (cx + 7, y)], fill)


def icon_repeat(layer, cx, cy, fill):
    layer.arc((cx - 6, cy - 4, cx + 6, cy + 4), 35, 325, fill, 1.3)
    layer.polygon([(cx + 2.5, cy - 6), (cx + 2.5, cy - 1), (cx + 6.5, cy - 3.5)], fill)


def icon_speaker(layer, cx, cy, fill, louder):
    layer.polygon([(cx - 6, cy - 2), (cx - 3.5, cy - 2), (cx, cy - 5), (cx, cy + 5), (cx - 3.5, cy + 2),
                   (cx - 6, cy + 2)], fill)
    layer.line([(cx + 2.5, cy), (cx + 6.5, cy)], fill, 1.4)
    if louder:
        layer.line([(cx + 4.5, cy - 2), (cx + 4.5, cy + 2)], fill, 1.4)


# --- Controls, each drawn over its own piece of the background ---------------------
def button_face(layer, w, h, pressed, accent=False):
    if accent:
        top, bottom = (ACCENT_DARK, (24, 84, 160)) if pressed else (ACCENT, ACCENT_DARK)
        edge = (24, 84, 160) if pressed else ACCENT_LIGHT
    else:
        top, bottom = (PRESSED_TOP, PRESSED_BOTTOM) if pressed else (FACE_TOP, FACE_BOTTOM)
        edge = FACE_EDGE
    steps = 12
    for i in range(steps):
        t = i / (steps - 1)
        y0 = 0.5 + (h - 1) * i / steps
        y1 = 0.5 + (h - 1) * (i + 1) / steps
        layer.draw.rectangle([1 * SS, y0 * SS, (w - 1) * SS, y1 * SS], fill=lerp(top, bottom, t) + (255,))
    mask = Image.new("L", layer.image.size, 0)
    ImageDraw.Draw(mask).rounded_rectangle([0.5 * SS, 0.5 * SS, (w - 0.5) * SS, (h - 0.5) * SS], 6 * SS, fill=255)
    clear = Image.new("RGBA", layer.image.size, (0, 0, 0, 0))
    layer.image = Image.composite(layer.image, clear, mask)
    layer.draw = ImageDraw.Draw(layer.image)
    layer.rounded((0.5, 0.5, w - 0.5, h - 0.5), 6, outline=edge + (255,), width=1)


def control_piece(background, box, paint):
    x, y, w, h = box
    piece = background.crop((x, y, x + w, y + h))
    layer = Layer(w, h)
    paint(layer, w, h)
    over(piece, layer.result())
    return piece


def transport(background, box, icon, pressed, accent=False):
    def paint(layer, w, h):
        button_face(layer, w, h, pressed, accent)
        colour = (255, 255, 255, 255) if accent else (ACCENT_LIGHT if pressed else ICON) + (255,)
        icon(layer, w / 2, h / 2 + (0.5 if pressed else 0), colour)
    return control_piece(background, box, paint)


def toggle(background, box, kind, checked, pressed):
    def paint(layer, w, h):
        button_face(layer, w, h, pressed)
        colour = (ACCENT_LIGHT if checked else DIM) + (255,)
        cx, cy = w / 2 - 4, h / 2 + (0.5 if pressed else 0)
        if kind == "SHUFFLEONOFF":
            icon_shuffle(layer, cx, cy, colour)
        elif kind == "REPEATONOFF":
            icon_repeat(layer, cx, cy, colour)
        else:
            layer.text((cx, cy), "EQ" if kind == "EQONOFF" else "BASS", 7, colour)
        led = ACCENT if checked else LED_OFF
        layer.ellipse((w - 9, h / 2 - 2.5, w - 4, h / 2 + 2.5), fill=led + (255,))
    return control_piece(background, box, paint)


def thumb(background, box, size, fill, edge):
    """A round thumb cut out of the groove it rides on, magenta around it."""
    tw, th = size
    x, y, w, h = box
    left, top = x + (w - tw) // 2, y + (h - th) // 2
    piece = background.crop((left, top, left + tw, top + th))
    layer = Layer(tw, th)
    layer.rounded((0.5, 0.5, tw - 0.5, th - 0.5), min(tw, th) / 2 - 0.5, fill=fill + (255,),
                  outline=edge + (255,), width=1)
    drawn = layer.result()
    over(piece, drawn)
    cut = Image.new("RGB", (tw, th), MASK)
    cut.paste(piece, (0, 0), drawn.getchannel("A").point(lambda a: 255 if a >= 96 else 0))
    return cut


def status_icon(background, state):
    def paint(layer, w, h):
        cx, cy = w / 2, h / 2
        if state == "stop":
            icon_stop(layer, cx, cy, 7, DIM + (255,))
        elif state == "play":
            icon_play(layer, cx, cy, 8, GREEN + (255,))
        else:
            icon_pause(layer, cx, cy, 8, AMBER + (255,))
    return control_piece(background, STATUS, paint)


# --- The sheet and the layout -----------------------------------------------------
def main():
    background = make_background()
    sheet = Image.new("RGB", SHEET_SIZE, MASK)
    places = {}

    def put(name, image, at):
        sheet.paste(image, at)
        places[name] = at

    icons = {
        "PREVIOUS": (PREV, lambda l, cx, cy, c: icon_skip(l, cx, cy, 12, c, False)),
        "STOP": (STOP, lambda l, cx, cy, c: icon_stop(l, cx, cy, 11, c)),
        "NEXT": (NEXT, lambda l, cx, cy, c: icon_skip(l, cx, cy, 12, c, True)),
    }
    for column, (name, (box, icon)) in enumerate(icons.items()):
        put(name + ".r", transport(background, box, icon, False), (column * 34, 0))
        put(name + ".p", transport(background, box, icon, True), (column * 34, 32))
    play_icons = [lambda l, cx, cy, c: icon_play(l, cx, cy, 13, c), lambda l, cx, cy, c: icon_pause(l, cx, cy, 13, c)]
    for state, icon in enumerate(play_icons):
        put("PLAY%d.r" % (state + 1), transport(background, PLAY, icon, False, accent=True), (102 + state * 44, 0))
        put("PLAY%d.p" % (state + 1), transport(background, PLAY, icon, True, accent=True), (102 + state * 44, 32))
    for row, (name, box) in enumerate(TOGGLES):
        for column, (checked, pressed) in enumerate(((False, False), (False, True), (True, False), (True, True))):
            put("%s.%d" % (name, column), toggle(background, box, name, checked, pressed), (column * 37, 64 + row * 18))
    for row, (name, box, louder) in enumerate((("VOLUMEDOWN", VOLDOWN, False), ("VOLUMEUP", VOLUP, True))):
        for column, pressed in enumerate((False, True)):
            icon = lambda l, cx, cy, c, louder=louder: icon_speaker(l, cx, cy, c, louder)
            put("%s.%d" % (name, column), transport(background, box, icon, pressed), (148 + column * 20, 64 + row * 20))
    put("SEEK.r", thumb(background, SEEK, SEEK_THUMB, ACCENT, ACCENT_LIGHT), (148, 104))
    put("SEEK.p", thumb(background, SEEK, SEEK_THUMB, ACCENT_LIGHT, (255, 255, 255)), (158, 104))
    put("VOLUME.r", thumb(background, VOLUME, VOLUME_THUMB, ICON, (255, 255, 255)), (168, 104))
    put("VOLUME.p", thumb(background, VOLUME, VOLUME_THUMB, ACCENT_LIGHT, (255, 255, 255)), (176, 104))
    for column, state in enumerate(("stop", "play", "pause")):
        put("STATUS." + state, status_icon(background, state), (148 + column * 12, 118))

    os.makedirs(OUT, exist_ok=True)
    background.save(os.path.join(OUT, "background.png"), optimize=True)
    sheet.save(os.path.join(OUT, "controls.png"), optimize=True)
    with open(os.path.join(OUT, "layout.xml"), "w", newline="\n") as out:
        out.write(layout_xml(places))


def image(tag, name, places):
    x, y = places[name]
    return '<%s src="controls" x="%d" y="%d" />' % (tag, x, y)


def box(b):
    return 'x="%d" y="%d" w="%d" h="%d"' % b


def layout_xml(places):
    lines = ['<skin>', '  <preload>', '    <bitmap alias="background" file="background.png" />',
             '    <bitmap alias="controls" file="controls.png" />', '  </preload>', '  <layout>',
             '    <background src="background" />']
    lines.append('    <iconstatus %s>' % box(STATUS))
    for state in ("stop", "play", "pause"):
        lines.append('      ' + image(state, "STATUS." + state, places))
    lines.append('    </iconstatus>')
    lines.append('    <timer %s color="7FC4FF" point="11" />' % box(TIMER))
    lines.append('    <titlebar %s color="E6EDF3" point="8" />' % box(TITLE))
    lines.append('    <text %s id="BITRATE" color="AAB6C5" point="7" />' % box(BITRATE))
    lines.append('    <text %s id="SAMPLINGRATE" color="AAB6C5" point="7" />' % box(SAMPLERATE))
    for name, b in (("SEEKBAR", SEEK), ("VOLUME", VOLUME)):
        key = "SEEK" if name == "SEEKBAR" else "VOLUME"
        tw, th = SEEK_THUMB if key == "SEEK" else VOLUME_THUMB
        lines.append('    <slider %s id="%s" orientation="0">' % (box(b), name))
        for tag, suffix in (("released", ".r"), ("pressed", ".p")):
            x, y = places[key + suffix]
            lines.append('      <%s src="controls" x="%d" y="%d" w="%d" h="%d" mask_color="FF00FF" />'
                         % (tag, x, y, tw, th))
        lines.append('    </slider>')
    for name, b in (("PREVIOUS", PREV), ("STOP", STOP), ("NEXT", NEXT)):
        lines.append('    <button %s id="%s">' % (box(b), name))
        lines.append('      ' + image("released", name + ".r", places))
        lines.append('      ' + image("pressed", name + ".p", places))
        lines.append('    </button>')
    lines.append('    <checkbutton %s id="PLAYPAUSE">' % box(PLAY))
    for state in (1, 2):
        lines.append('      <state%d>' % state)
        lines.append('        ' + image("released", "PLAY%d.r" % state, places))
        lines.append('        ' + image("pressed", "PLAY%d.p" % state, places))
        lines.append('      </state%d>' % state)
    lines.append('    </checkbutton>')
    for name, b in TOGGLES:
        lines.append('    <checkbutton %s id="%s">' % (box(b), name))
        for state in (1, 2):
            lines.append('      <state%d>' % state)
            lines.append('        ' + image("released", "%s.%d" % (name, (state - 1) * 2), places))
            lines.append('        ' + image("pressed", "%s.%d" % (name, (state - 1) * 2 + 1), places))
            lines.append('      </state%d>' % state)
        lines.append('    </checkbutton>')
    for name, b in (("VOLUMEDOWN", VOLDOWN), ("VOLUMEUP", VOLUP)):
        lines.append('    <button %s id="%s">' % (box(b), name))
        lines.append('      ' + image("released", name + ".0", places))
        lines.append('      ' + image("pressed", name + ".1", places))
        lines.append('    </button>')
    lines += ['  </layout>', '</skin>', '']
    return "\n".join(lines)


if __name__ == "__main__":
    main()
