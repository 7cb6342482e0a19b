#!/usr/bin/python3
"""Makes the pictures of the test skin (layout.xml is written by hand): flat
colour blocks, so that tests can tell each piece by one pixel. One file per
format the skin reads: BMP, PNG, GIF, JPEG. Needs python3-pil.
    /usr/bin/python3 tests/data/skin/make_test_skin.py
"""
import os
from PIL import Image, ImageDraw

HERE = os.path.dirname(os.path.abspath(__file__))
MAGENTA = (255, 0, 255)

Image.new("RGB", (176, 180), (64, 64, 64)).convert("P", palette=Image.ADAPTIVE).save(os.path.join(HERE, "background.bmp"))

sheet = Image.new("RGB", (80, 20), (0, 0, 0))
draw = ImageDraw.Draw(sheet)
blocks = [((0, 0), (255, 0, 0)), ((0, 10), (0, 255, 0)),          # button released, pressed
          ((20, 0), (0, 0, 255)), ((20, 10), (255, 255, 0)),      # state1 released, pressed
          ((40, 0), (0, 255, 255)), ((40, 10), (255, 255, 255))]  # state2 released, pressed
for (x, y), colour in blocks:
    draw.rectangle([x, y, x + 19, y + 9], fill=colour)
# Thumbs of 8 by 8 with a magenta frame, whose colour the mask leaves out.
for (x, y), colour in (((60, 0), (0, 0, 192)), ((60, 10), (192, 0, 0))):
    draw.rectangle([x, y, x + 7, y + 7], fill=MAGENTA)
    draw.rectangle([x + 1, y + 1, x + 6, y + 6], fill=colour)
sheet.save(os.path.join(HERE, "sheet.png"))

icons = Image.new("RGB", (30, 10), (0, 0, 0))
draw = ImageDraw.Draw(icons)
for x, colour in ((0, (128, 128, 0)), (10, (0, 128, 0)), (20, (128, 0, 128))):
    draw.rectangle([x, 0, x + 9, 9], fill=colour)
icons.save(os.path.join(HERE, "icons.gif"))

Image.new("RGB", (8, 8), (90, 90, 90)).save(os.path.join(HERE, "extra.jpg"), quality=90)
