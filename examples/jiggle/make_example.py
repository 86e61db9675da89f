#!/usr/bin/env python3
"""Writes the meshes and maps of the jiggle example (run once; the results are
committed). A torso, a closed capsule along y, and a belly: a soft cap that
bulges from the front of the torso (+z), held at its rim and free in its
middle. Units are centimetres."""

import math
import os

HERE = os.path.dirname(os.path.abspath(__file__))

TORSO_RADIUS = 8.0
BELLY_ROWS = 17     # points along y
BELLY_COLUMNS = 17  # points around the torso
BELLY_HEIGHT = 6.0  # half the belly's extent along y
BELLY_ANGLE = 0.7   # half the belly's extent around the torso, radians
RIM_GAP = 0.3       # gap between the belly's rim and the torso
BULGE = 3.0         # extra bulge in the middle


def write_obj(name, points, faces):
    with open(os.path.join(HERE, "meshes", name), "w") as f:
        f.write("# %s: %d points, %d polygons\n" % (name, len(points), len(faces)))
        for p in points:
            f.write("v %.6f %.6f %.6f\n" % p)
        for face in faces:
            f.write("f " + " ".join(str(i + 1) for i in face) + "\n")


def write_map(name, values, comment):
    with open(os.path.join(HERE, "maps", name), "w") as f:
        f.write("# %s, one value per point\n" % comment)
        for v in values:
            f.write("%g\n" % v)


def capsule(radius, half_height, rings, segments):
    """A closed capsule along y: rings of a cylinder and two hemispheres."""
    points, faces = [], []
    profile = []  # (y, r) from bottom to top
    cap_rings = rings // 3
    for k in range(1, cap_rings + 1):
        a = -math.pi / 2 + (math.pi / 2) * k / (cap_rings + 1)
        profile.append((-half_height + radius * math.sin(a), radius * math.cos(a)))
    for k in range(rings):
        profile.append((-half_height + 2 * half_height * k / (rings - 1), radius))
    for k in range(cap_rings, 0, -1):
        a = math.pi / 2 - (math.pi / 2) * k / (cap_rings + 1)
        profile.append((half_height + radius * math.sin(a), radius * math.cos(a)))
    for y, r in profile:
        for s in range(segments):
            a = 2.0 * math.pi * s / segments
            points.append((r * math.sin(a), y, r * math.cos(a)))
    for k in range(len(profile) - 1):
        for s in range(segments):
            a = k * segments + s
            b = k * segments + (s + 1) % segments
            faces.append((a, a + segments, b + segments, b))
    bottom = len(points)
    points.append((0.0, -half_height - radius, 0.0))
    top = len(points)
    points.append((0.0, half_height + radius, 0.0))
    last = (len(profile) - 1) * segments
    for s in range(segments):
        faces.append((bottom, (s + 1) % segments, s))
        faces.append((top, last + s, last + (s + 1) % segments))
    return points, faces


def belly():
    """A cap over the front of the torso: a grid around the torso's surface,
    pushed out along the surface normal by the rim gap plus the bulge."""
    points, faces, rim = [], [], []
    for r in range(BELLY_ROWS):
        v = -1.0 + 2.0 * r / (BELLY_ROWS - 1)
        for c in range(BELLY_COLUMNS):
            u = -1.0 + 2.0 * c / (BELLY_COLUMNS - 1)
            angle = u * BELLY_ANGLE
            offset = RIM_GAP + BULGE * (1.0 - u * u) * (1.0 - v * v)
            radius = TORSO_RADIUS + offset
            points.append((radius * math.sin(angle), v * BELLY_HEIGHT, radius * math.cos(angle)))
            rim.append(max(abs(u), abs(v)))
    for r in range(BELLY_ROWS - 1):
        for c in range(BELLY_COLUMNS - 1):
            a = r * BELLY_COLUMNS + c
            faces.append((a, a + 1, a + 1 + BELLY_COLUMNS, a + BELLY_COLUMNS))
    return points, faces, rim


def poses(points):
    """Target poses of the belly for learning its muscle patches: the upper
    half bulges forward, the lower half drops, the left side slides
    sideways. Each motion fades towards the rim, which stays put."""
    bulge, drop, slide = [], [], []
    for r in range(BELLY_ROWS):
        v = -1.0 + 2.0 * r / (BELLY_ROWS - 1)
        for c in range(BELLY_COLUMNS):
            u = -1.0 + 2.0 * c / (BELLY_COLUMNS - 1)
            x, y, z = points[r * BELLY_COLUMNS + c]
            fade = (1.0 - u * u) * (1.0 - v * v)
            bulge.append((x, y, z + (2.0 * fade if v > 0.1 else 0.0)))
            drop.append((x, y - (1.5 * fade if v < -0.1 else 0.0), z))
            slide.append((x - (3.0 * fade if u < -0.1 else 0.0), y, z))
    return {"bulge": bulge, "drop": drop, "slide": slide}


def main():
    torso = capsule(TORSO_RADIUS, 8.0, 12, 32)
    write_obj("torso.obj", torso[0], torso[1])
    points, faces, rim = belly()
    write_obj("belly.obj", points, faces)
    # Held at its rim, loose in the middle: the attraction falls from 1 at
    # the rim to a few percent at the centre.
    attract = [max(0.03, min(1.0, d ** 4)) for d in rim]
    write_map("belly_attract.txt", attract, "attraction to the animated shape")
    shape = [0.5 for _ in points]
    write_map("belly_shape.txt", shape, "shape preservation")
    # Poses that `myoforge learn` turns into belly.mmp (see learn_patches.sh).
    for name, pose in poses(points).items():
        write_obj("belly_pose_%s.obj" % name, pose, faces)


if __name__ == "__main__":
    main()
