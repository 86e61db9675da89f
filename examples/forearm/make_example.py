#!/usr/bin/env python3
"""Writes the meshes and maps of the forearm example (run once; the results
are committed). An upper arm bone along +x from the shoulder to the elbow at
x = 30, a forearm bone from the elbow, a fusiform muscle above the upper arm
bone that crosses the elbow, and a skin tube around the muscle. Units are
centimetres."""

import math
import os

HERE = os.path.dirname(os.path.abspath(__file__))


def write_obj(name, points, faces, uvs=None):
    with open(os.path.join(HERE, "meshes", name), "w") as f:
        f.write("# %s: %d points, %d polygons\n" % (name, len(points), len(faces)))
        for p in points:
            f.write("v %.6f %.6f %.6f\n" % p)
        if uvs:
            for uv in uvs:
                f.write("vt %.6f %.6f\n" % uv)
        for face in faces:
            if uvs:
                f.write("f " + " ".join("%d/%d" % (i + 1, i + 1) for i in face) + "\n")
            else:
                f.write("f " + " ".join(str(i + 1) for i in face) + "\n")


def write_map(name, values, comment):
    with open(os.path.join(HERE, "maps", name), "w") as f:
        f.write("# %s, one value per point\n" % comment)
        for v in values:
            f.write("%g\n" % v)


def tube(x0, x1, rings, segments, radius_at, center=(0.0, 0.0), capped=True):
    """Rings of points around the x axis; quads between rings; poles close
    the ends when capped. Returns points, faces, uvs and the x of each point."""
    points, uvs = [], []
    for r in range(rings):
        t = r / (rings - 1)
        x = x0 + (x1 - x0) * t
        radius = radius_at(t)
        for s in range(segments):
            a = 2.0 * math.pi * s / segments
            points.append((x, center[0] + radius * math.cos(a), center[1] + radius * math.sin(a)))
            uvs.append((s / segments, t))
    faces = []
    for r in range(rings - 1):
        for s in range(segments):
            a = r * segments + s
            b = r * segments + (s + 1) % segments
            faces.append((a, b, b + segments, a + segments))
    if capped:
        first = len(points)
        points.append((x0 - 0.01 * (x1 - x0), center[0], center[1]))
        uvs.append((0.5, 0.0))
        last = len(points)
        points.append((x1 + 0.01 * (x1 - x0), center[0], center[1]))
        uvs.append((0.5, 1.0))
        for s in range(segments):
            faces.append((first, (s + 1) % segments, s))
            top = (rings - 1) * segments
            faces.append((last, top + s, top + (s + 1) % segments))
    return points, faces, uvs


def main():
    # Bones: thin capped cylinders, each in the space of its own transform.
    humerus = tube(0.0, 30.0, 12, 16, lambda t: 1.5)
    write_obj("humerus.obj", humerus[0], humerus[1])
    radius_bone = tube(0.0, 25.0, 10, 16, lambda t: 1.2)
    write_obj("radius.obj", radius_bone[0], radius_bone[1])

    # Muscle: a spindle above the humerus, from x = 5 to x = 35, widest in
    # the middle, its lower side resting on the bone.
    def profile(t):
        return 0.35 + 1.85 * math.sin(math.pi * t) ** 0.9
    center = (3.6, 0.0)
    muscle = tube(5.0, 35.0, 41, 24, profile, center)
    points, faces, uvs = muscle
    write_obj("biceps.obj", points, faces, uvs)
    n = len(points)
    origin = [1.0 if p[0] < 9.0 else 0.0 for p in points]
    insertion = [1.0 if p[0] > 31.5 else 0.0 for p in points]
    tendons = [1.0 if (p[0] < 8.0 or p[0] > 32.5) else 0.0 for p in points]
    slide = [1.0 if (9.0 <= p[0] <= 29.0 and p[1] < center[0] - 0.8) else 0.0 for p in points]
    write_map("biceps_origin.txt", origin, "attachment to the upper arm")
    write_map("biceps_insertion.txt", insertion, "attachment to the forearm")
    write_map("biceps_tendons.txt", tendons, "tendons at both ends")
    write_map("biceps_slide_on_humerus.txt", slide, "points that slide on the humerus")
    assert len(origin) == n

    # Skin: an open tube around the muscle, held hard at its ends and
    # sliding over the muscle in between.
    skin = tube(4.0, 36.0, 33, 32, lambda t: 2.9, center, capped=False)
    write_obj("biceps_skin.obj", skin[0], skin[1], skin[2])
    hard = [1.0 if (p[0] < 7.0 or p[0] > 33.0) else 0.2 for p in skin[0]]
    slide_skin = [0.0 if (p[0] < 7.0 or p[0] > 33.0) else 0.8 for p in skin[0]]
    write_map("skin_hard.txt", hard, "hard constraints")
    write_map("skin_slide.txt", slide_skin, "slide constraints")


if __name__ == "__main__":
    main()
