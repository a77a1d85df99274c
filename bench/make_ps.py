#!/usr/bin/env python3
"""Writes a multi-page PostScript document of vector graphics and text, for the benchmark corpus.

Usage: make_ps.py SEED PAGES OUT.ps

Each A4 page carries a title, a colour band drawn as thin strips, a chart of filled rectangles,
circles and stroked Bezier curves, and two columns of body text in the standard fonts, all drawn
from a random generator seeded with SEED, so the same arguments always give the same file.
Ghostscript's pdfwrite device turns it into the PDF that the benchmark thumbnails.
"""
import random
import sys

WORDS = ("thumbnail image scale sample colour pixel folder preview format quality filter sharpen "
         "document page vector curve shape gradient photo camera light shadow border margin column "
         "paragraph river mountain harbour evening morning window garden market station bridge "
         "library winter summer north south ocean forest meadow village lantern signal").split()
W, H = 595, 842


def ps_string(text):
    return "(" + text.replace("\\", "\\\\").replace("(", "\\(").replace(")", "\\)") + ")"


def sentence(rng, n):
    words = [rng.choice(WORDS) for _ in range(n)]
    words[0] = words[0].capitalize()
    return " ".join(words) + "."


def page(rng, number, pages):
    out = []
    # Background band: 80 strips from one colour to another.
    c0 = [rng.random() for _ in range(3)]
    c1 = [rng.random() for _ in range(3)]
    for i in range(80):
        t = i / 79
        r, g, b = (a + (z - a) * t for a, z in zip(c0, c1))
        out.append(f"{r:.3f} {g:.3f} {b:.3f} setrgbcolor {40 + i * 6.4:.1f} 700 6.5 100 rectfill")
    out.append(f"0 0 0 setrgbcolor /Helvetica-Bold 22 selectfont 50 740 moveto "
               f"{ps_string(sentence(rng, 4)[:-1])} show")
    # Chart: shapes inside a frame.
    out.append("0.2 setgray 1 setlinewidth 50 420 495 260 rectstroke")
    for _ in range(40):
        r, g, b = rng.random(), rng.random(), rng.random()
        x, y = 55 + rng.random() * 440, 425 + rng.random() * 210
        kind = rng.randrange(3)
        if kind == 0:
            out.append(f"{r:.3f} {g:.3f} {b:.3f} setrgbcolor {x:.1f} {y:.1f} "
                       f"{rng.uniform(5, 45):.1f} {rng.uniform(5, 45):.1f} rectfill")
        elif kind == 1:
            out.append(f"{r:.3f} {g:.3f} {b:.3f} setrgbcolor newpath {x:.1f} {y:.1f} "
                       f"{rng.uniform(3, 25):.1f} 0 360 arc fill")
        else:
            pts = " ".join(f"{55 + rng.random() * 485:.1f} {425 + rng.random() * 250:.1f}" for _ in range(3))
            out.append(f"{r:.3f} {g:.3f} {b:.3f} setrgbcolor {rng.uniform(0.5, 4):.1f} setlinewidth "
                       f"newpath {x:.1f} {y:.1f} moveto {pts} curveto stroke")
    # Two columns of body text.
    out.append("0 setgray /Times-Roman 9.5 selectfont")
    for column in range(2):
        y = 395
        while y > 60:
            line = " ".join(rng.choice(WORDS) for _ in range(7))
            out.append(f"{50 + column * 255} {y} moveto {ps_string(line)} show")
            y -= 11.5
    out.append(f"/Helvetica 8 selectfont 280 30 moveto (Page {number} of {pages}) show")
    return f"%%Page: {number} {number}\n" + "\n".join(out) + "\nshowpage\n"


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__.splitlines()[2])
    seed, pages, path = int(sys.argv[1]), int(sys.argv[2]), sys.argv[3]
    rng = random.Random(seed)
    with open(path, "w", encoding="ascii") as f:
        f.write(f"%!PS-Adobe-3.0\n%%Pages: {pages}\n%%BoundingBox: 0 0 {W} {H}\n%%EndComments\n")
        f.write(f"<< /PageSize [{W} {H}] >> setpagedevice\n")
        for n in range(1, pages + 1):
            f.write(page(rng, n, pages))
        f.write("%%EOF\n")


if __name__ == "__main__":
    main()
