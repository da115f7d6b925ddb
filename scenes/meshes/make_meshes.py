#!/usr/bin/env python3
"""Makes the meshes of the scenes, into the folder of this script.

sphere.obj  radius 1
torus.obj   ring radius 1, tube radius 0.3, around y
knot.ply    a trefoil knot as a tube, about 3 across: no symmetry that a plume could keep
cup.obj     a cup with a wall, height 1.2, open at the top

All are closed, y is up, and the outer sides run counter-clockwise.
"""

import math
import pathlib

HERE = pathlib.Path(__file__).parent


def grid_faces(rows, columns):
    """Quads over a grid of points that closes in both directions."""
    faces = []
    for i in range(rows):
        for j in range(columns):
            k, l = (i + 1) % rows, (j + 1) % columns
            faces.append((i * columns + j, i * columns + l, k * columns + l, k * columns + j))
    return faces


def tube(center, radius, rows, columns):
    """A closed tube of circles around the curve `center`, in frames that turn as little as they can."""
    points = []
    at = [center(2 * math.pi * i / rows) for i in range(rows)]
    tangents = [unit(minus(at[(i + 1) % rows], at[i - 1])) for i in range(rows)]
    normal = unit(cross(tangents[0], (0.3, 1, 0.2)))
    normals = []
    for t in tangents:
        normal = unit(minus(normal, scaled(t, dot(normal, t))))
        normals.append(normal)
    # What the frame has turned after once around is spread over all circles.
    last = unit(minus(normals[-1], scaled(tangents[0], dot(normals[-1], tangents[0]))))
    turn = math.atan2(dot(cross(last, normals[0]), tangents[0]), dot(last, normals[0]))
    for i in range(rows):
        n, b = normals[i], cross(tangents[i], normals[i])
        for j in range(columns):
            a = 2 * math.pi * j / columns + turn * i / rows
            offset = plus(scaled(n, radius * math.cos(a)), scaled(b, radius * math.sin(a)))
            points.append(plus(at[i], offset))
    return points, grid_faces(rows, columns)


def revolved(profile, columns):
    """The profile of (radius, height), from the lower to the upper end of the axis, around y."""
    points, faces, rings = [], [], []
    for radius, height in profile:
        first = len(points)
        count = columns if radius > 0 else 1
        for j in range(count):
            a = 2 * math.pi * j / columns
            points.append((radius * math.cos(a), height, -radius * math.sin(a)))
        rings.append((first, count))
    for (a, na), (b, nb) in zip(rings, rings[1:]):
        for j in range(columns):
            k = (j + 1) % columns
            quad = (a + j % na, a + k % na, b + k % nb, b + j % nb)
            faces.append(tuple(dict.fromkeys(quad)))
    return points, faces


def plus(a, b):
    return tuple(x + y for x, y in zip(a, b))


def minus(a, b):
    return tuple(x - y for x, y in zip(a, b))


def scaled(a, s):
    return tuple(x * s for x in a)


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def unit(a):
    return scaled(a, 1 / math.sqrt(dot(a, a)))


def write_obj(name, points, faces):
    lines = [f"v {x:.6g} {y:.6g} {z:.6g}" for x, y, z in points]
    lines += ["f " + " ".join(str(i + 1) for i in face) for face in faces]
    (HERE / name).write_text("\n".join(lines) + "\n")


def write_ply(name, points, faces):
    lines = ["ply", "format ascii 1.0", f"element vertex {len(points)}"]
    lines += [f"property float {axis}" for axis in "xyz"]
    lines += [f"element face {len(faces)}", "property list uchar int vertex_indices", "end_header"]
    lines += [f"{x:.6g} {y:.6g} {z:.6g}" for x, y, z in points]
    lines += [f"{len(face)} " + " ".join(map(str, face)) for face in faces]
    (HERE / name).write_text("\n".join(lines) + "\n")


def sphere(rows, columns):
    angles = [math.pi * (i / rows - 0.5) for i in range(rows + 1)]
    profile = [(math.cos(a), math.sin(a)) for a in angles]
    profile[0], profile[-1] = (0, -1), (0, 1)
    return revolved(profile, columns)


def trefoil(t):
    return (math.sin(t) + 2 * math.sin(2 * t), -math.sin(3 * t) * 0.6,
            math.cos(t) - 2 * math.cos(2 * t))


CUP = [(0, 0), (0.45, 0), (0.55, 0.15), (0.62, 0.6), (0.75, 1.2), (0.66, 1.2), (0.53, 0.6),
       (0.46, 0.22), (0, 0.16)]

if __name__ == "__main__":
    write_obj("sphere.obj", *sphere(16, 32))
    write_obj("torus.obj", *tube(lambda t: (math.cos(t), 0, -math.sin(t)), 0.3, 48, 16))
    write_ply("knot.ply", *tube(trefoil, 0.45, 120, 12))
    write_obj("cup.obj", *revolved(CUP, 40))
