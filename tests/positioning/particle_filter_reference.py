#!/usr/bin/env python3
"""Positions of the particle filter, worked out step by step.

Writes scenarios with their results, the text that TTrilaterationTest.cpp plays:
    particle_filter_reference.py > particle_filter_reference.txt

Slow and plain on purpose: weights as products, sums, a sort. Positions are 32-bit floats wherever
they are stored. Every comparison that decides something is checked to be far from a tie, so that
the results do not hang on the last bit, and every branch must have been taken by some scenario.

A line is a command and what belongs to it; metres, calculator units (hundredths) for `report` and
for results, milliseconds for `wait`:
    scenario TITLE
    map LEFT TOP RIGHT BOTTOM SEED ZERO     the draw number ZERO (from 0) is 0; -1: none
    beacons (X Y CENTRE_X CENTRE_Y USED)...
    segment X1 Y1 X2 Y2
    options PARTICLES MOVEMENT RELATIVE BEACONS_TO_USE
    stepping UNITS
    report X Y                       sets the last reported position
    wait MILLISECONDS
    step LENGTH (BEACON DISTANCE)...    first LENGTH of the list, then the nearest; -9: not sighted
    none                             the step gives no estimate
    is RAW_X RAW_Y REPORTED_X REPORTED_Y PARTICLE_X PARTICLE_Y P
"""
import math
import struct

LARGEST = 2147483647
TAKEN = set()


def f32(x):
    return struct.unpack("f", struct.pack("f", x))[0]


def point(x, y):
    return (f32(x), f32(y))


def units(x, y):
    return point(f32(x) * 100, f32(y) * 100)


def distance(a, b):
    return math.hypot(a[0] - b[0], a[1] - b[1])


def same(a, b):
    """Clearly the same or clearly not."""
    assert a == b or distance(a, b) > 0.1, "nearly the same"
    return a == b


def whole(x, exact=False):
    """Truncated; a value that is not known exactly must not be near a step."""
    assert exact or abs(x - round(x)) > 3e-4, "nearly whole"
    return int(x)


def whole_distance(a, b):
    return whole(distance(a, b), exact=a[0] == b[0] or a[1] == b[1])


def towards(a, b, length):
    d = distance(a, b)
    return point(a[0] + (b[0] - a[0]) / d * length, a[1] + (b[1] - a[1]) / d * length)


def erfc(z):
    t = 1 / (1 + 0.5 * abs(z))
    powers = (-1.26551223, 1.00002368, 0.37409196, 0.09678418, -0.18628806,
              0.27886807, -1.13520398, 1.48851587, -0.82215223, 0.17087277)
    a = t * math.exp(-z * z + sum(c * t**i for i, c in enumerate(powers)))
    return a if z >= 0 else 2 - a


class Random:
    """A linear congruential generator modulo 2^64, its upper 53 bits as a fraction."""

    def __init__(self, seed, zero):
        self.state, self.zero, self.count = seed, zero, 0

    def draw(self):
        self.state = (self.state * 6364136223846793005 + 1442695040888963407) % 2**64
        self.count += 1
        return 0.0 if self.count - 1 == self.zero else (self.state >> 11) * 2.0**-53

    def draw_above_zero(self):
        u = self.draw()
        if u == 0:
            TAKEN.add("draw of 0")
        return u or self.draw_above_zero()


class Scenario:
    def __init__(self, title, area=(0, 0, 20, 15), seed=1, zero=-1, segments=(), beacons=None,
                 options=(100, 15, 0.15, 3)):
        print("scenario", title)
        print("map", *area, seed, zero)
        self.beacons = beacons or BEACONS
        print("beacons", *(number for b in self.beacons for number in b))
        for s in segments:
            print("segment", *s)
        self.random = Random(seed, zero)
        self.cloud = []
        self.options(*options)
        left, top, self.right, self.bottom = (f32(x * 100) for x in area)
        for particle in self.cloud:
            x = self.random.draw() * (self.right - left + 1) + left
            y = self.random.draw() * (self.bottom - top + 1) + top
            particle[:] = [point(x, y), 1.0]
        self.segments = [(units(a, b), units(c, d)) for a, b, c, d in segments]
        self.path_step = 0
        self.placed, self.clock, self.started = False, 0, None
        self.reported = self.accepted = (0.0, 0.0)
        self.ever_accepted = False

    # ------------------------------------------------------------ what happens to the calculator

    def options(self, particles, movement, relative, to_use):
        print("options", particles, movement, relative, to_use)
        del self.cloud[particles:]
        self.cloud += [[(0.0, 0.0), 0.0] for _ in range(particles - len(self.cloud))]
        self.movement, self.relative, self.to_use = movement, f32(relative), to_use

    def stepping(self, path_step):
        print("stepping", path_step)
        self.path_step = path_step

    def report(self, x, y):
        print("report", x, y)
        self.reported = point(x, y)

    def wait(self, milliseconds):
        print("wait", milliseconds)
        self.clock += milliseconds

    def stand(self, x, y, steps=1, noise=0.05):
        """Steps that see all beacons from a place in metres, nearest first."""
        for number in range(steps):
            seen = []
            for i, b in enumerate(self.beacons):
                wrong = 1 + noise * math.sin(7 * i + 3 * number)
                seen.append((i, round(distance((x, y), b[2:4]) * wrong, 3)))
            self.step(sorted(seen, key=lambda s: s[1]))

    def step(self, seen, nearest=()):
        entries = [*seen, *nearest]
        print("step", len(seen), *(x for i, d in entries for x in (i, -9 if d is None else d)))
        result = self.calculate(seen, nearest)
        if result is None:
            return print("none")
        raw, particle, weight = result
        assert all(p == [particle, weight] for p in self.cloud)
        print("is %.3f %.3f %.3f %.3f %.3f %.3f %.11g" %
              (*raw, *self.reported, *particle, weight))

    # ------------------------------------------------------------ the calculation

    def calculate(self, seen, nearest):
        if not self.placed and not self.place(seen):
            return None
        table = []
        for i, metres in nearest if nearest and nearest[0][1] is not None else seen:
            if metres is None or metres < 0 or not self.beacons[i][4]:
                continue
            table.append((units(*self.beacons[i][2:4]), metres * 100))
        if len(table) < self.to_use:
            return None
        for _ in range(2):
            mean = self.iterate(table)
        raw = point(min(max(mean[0], 0), self.right), min(max(mean[1], 0), self.bottom))
        if raw != mean:
            TAKEN.add("clamped")
        self.damp(raw, table[0][0])
        return raw, self.cloud[0][0], self.cloud[0][1]

    def place(self, seen):
        if self.started is None:
            self.started = self.clock
        sighted = sum(1 for _, metres in seen if metres is not None)
        elapsed = self.clock - self.started
        assert abs(elapsed - 3000) > 50
        if sighted < len(seen) / 2 and elapsed <= 3000:
            TAKEN.add("not placed")
            return False
        if seen and seen[0][1] is not None:
            for particle in self.cloud:
                particle[:] = [units(*self.beacons[seen[0][0]][:2]), 1.0]
        else:
            TAKEN.add("spread")
        self.placed = True
        return True

    def iterate(self, table):
        self.move()
        self.weigh(table[:self.to_use])
        total = sum(p for _, p in self.cloud)
        for particle in self.cloud:
            if particle[1] != 0:
                particle[1] = total / particle[1]
        if total == 0:
            best = self.nearest_to_circle(*table[0])
        else:
            chosen = sorted((p for p in self.cloud if p[1] != 0), key=lambda p: p[1])
            assert len(chosen) == 1 or chosen[0][1] * (1 + 1e-8) < chosen[1][1], "a tie"
            assert total > 1e-200
            best = chosen[0]
        self.cloud = [list(best) for _ in self.cloud]
        count = len(self.cloud)
        return point(sum(p[0][0] for p in self.cloud) / count,
                     sum(p[0][1] for p in self.cloud) / count)

    def move(self):
        count = len(self.cloud)
        doubled = 50 if count >= 50 else (count + 1) // 2
        for i, particle in enumerate(self.cloud):
            sigma = self.movement * (2 if i >= count - doubled else 1)
            r = math.sqrt(-2 * math.log10(self.random.draw_above_zero()))
            angle = 6.283185307179586 * self.random.draw()
            (x, y), _ = particle
            particle[0] = point(x + r * math.sin(angle) * sigma, y + r * math.cos(angle) * sigma)

    def weigh(self, table):
        for place, measured in table:
            sigma = (measured if measured != 0 else 0.01) * self.relative
            for particle in self.cloud:
                x = -abs(distance(place, particle[0]) - measured) / 100
                particle[1] *= 0.5 * erfc(-x / (sigma * math.sqrt(2)))

    def nearest_to_circle(self, place, measured):
        TAKEN.add("no weight")
        off = sorted((abs(distance(place, p[0]) - measured), p[0]) for p in self.cloud)
        assert off[1][0] - off[0][0] > 1e-3, "a tie"
        sigma = (measured if measured != 0 else 0.01) * self.relative
        assert off[0][0] / 100 / sigma > 60, "far from the smallest number"
        return [off[0][1], 1.0]

    # ------------------------------------------------------------ from the raw to the reported

    def damp(self, raw, first):
        median, moved, far = raw, LARGEST, False
        if self.reported != (0.0, 0.0):
            moved = whole_distance(self.reported, raw)
            if moved > 200:
                median, far = towards(self.reported, raw, 200), moved > 500
                TAKEN.add("far" if far else "limited")
            elif whole_distance(first, raw) <= 200 and not same(raw, first):
                median = first
                TAKEN.add("snapped")
            else:
                median = self.accepted if self.ever_accepted else self.reported
                TAKEN.add("held on the path" if self.ever_accepted else "held")
        if self.segments and not same(median, self.accepted):
            median = self.fit(median, raw, moved, far)
        self.reported = median

    def fit(self, median, raw, moved, far):
        best = {"A": (LARGEST, None, -1), "B": (LARGEST, None, -1)}
        for index, segment in enumerate(self.segments):
            foot = self.foot(median, *segment)
            if foot is None:
                continue
            for name, to in (("A", median), ("B", raw)):
                value = whole_distance(foot, to)
                if value == best[name][0]:
                    TAKEN.add("tie")
                if value < best[name][0]:
                    best[name] = (value, foot, index)
        if best["A"][1] != best["B"][1]:
            TAKEN.add("winner " + ("B" if far else "A"))
        value, foot, index = best["B" if far else "A"]
        if not value < moved:
            TAKEN.add("refused" if self.ever_accepted else "refused at first")
            return self.accepted if self.ever_accepted else median
        self.accepted, self.ever_accepted = foot, True
        if self.path_step <= 0:
            return foot
        TAKEN.add("stepping")
        p1, p2 = self.segments[index]
        along = whole_distance(p1, foot)
        return towards(p1, p2, along // self.path_step * 100 + 50)

    def foot(self, m, p1, p2):
        d = (p2[0] - p1[0], p2[1] - p1[1])
        length2 = d[0] * d[0] + d[1] * d[1]
        if length2 < 1e-12:
            TAKEN.add("point for a segment")
            return None
        t = ((m[0] - p1[0]) * d[0] + (m[1] - p1[1]) * d[1]) / length2
        assert t == 0 or t == 1 or min(abs(t), abs(t - 1)) > 1e-4
        if t < 1e-6 or t > 1:
            TAKEN.add("before" if t < 0 else "first end" if t == 0 else "beyond")
            return None
        return tuple(float(whole(p1[i] + t * d[i], exact=d[i] == 0 or t * 1024 % 1 == 0))
                     for i in range(2))


# What a beacon is: place X, Y; centre X, Y; whether it is used.
BEACONS = [(x, y, x, y, 1) for x, y in ((2, 2), (10, 1), (18, 3), (3, 13), (11, 14), (17, 12))]


def start_up():
    s = Scenario("Few beacons are waited for, then the cloud is placed", options=(60, 15, 0.15, 2))
    seen = [(0, 1.31), (1, 6.97), (2, None), (3, None), (4, None)]
    for pause in (0, 1500, 1400):
        s.wait(pause)
        s.step(seen)
    s.wait(200)
    s.step(seen)
    s.step(seen)

    s = Scenario("Half of the beacons place the cloud at once, at the place and not the centre",
                 seed=2, beacons=[(4, 3, 4.5, 3.25, 1)] + BEACONS[1:], options=(60, 15, 0.15, 2))
    s.step([(0, 0.5), (1, 5.9), (2, None), (3, None)])

    s = Scenario("The cloud stays spread when the first beacon is not sighted", area=(1, 2, 20, 15),
                 seed=3)
    s.step([(0, None), (1, 8.35), (2, 9.87), (4, 5.77)])

    s = Scenario("A beacon counts when it is used, sighted and its distance known", seed=4,
                 beacons=BEACONS[:5] + [(17, 12, 17, 12, 0)])
    s.step([(5, 1.5), (0, 2.25), (1, -1.0), (2, None), (3, 9.5)])
    s.step([(5, 1.5), (0, 2.25), (1, 6.25), (2, None), (3, 9.5)])
    s.step([(0, 2.25), (1, 6.25), (3, 9.5)], [(3, 9.25), (1, 6.5), (4, 11.5)])
    s.step([(0, 2.25), (1, 6.25), (3, 9.5)], [(3, None), (1, 6.5), (4, 11.5)])
    s.step([(0, 2.25), (1, 6.25), (3, 9.5)], [(3, 9.25), (1, 6.5)])


def without_paths():
    s = Scenario("Standing", seed=5)
    s.stand(7.5, 6.5, steps=6)

    s = Scenario("Walking", seed=6)
    for i in range(8):
        s.stand(3 + 0.9 * i, 3 + 0.5 * i)

    s = Scenario("A jump goes 2 m at a time", seed=7, options=(100, 40, 0.15, 4))
    s.stand(4, 4, steps=2)
    s.report(1500.0, 1100.0)
    s.stand(4, 4, steps=2)
    s.report(700.0, 350.0)
    s.stand(4, 4)

    s = Scenario("Estimates stay on the map, which begins at 0 whatever its edge is",
                 area=(3, 2, 20, 15), seed=8,
                 beacons=[(0.1, 0.1, -3, -2, 1), (1, 1, -2, -4, 1), (2, 1, -1, -3, 1)])
    s.stand(-2, -3, steps=3)
    s = Scenario("Estimates stay on the map, also at its far corner", seed=9,
                 beacons=[(20, 14, 24, 14, 1), (18, 15, 19, 19, 1), (18, 13, 23, 18, 1)])
    s.stand(23, 17, steps=3)


def weights():
    for count in (1, 7, 50, 51):
        s = Scenario(f"A cloud of {count}", seed=20 + count, options=(count, 25, 0.15, 3))
        s.stand(3, 3.5, steps=2)

    s = Scenario("A draw of 0 is drawn again", seed=11, zero=2 * 60 + 2 * 17,
                 options=(60, 15, 0.15, 3))
    s.stand(3, 3.5, steps=2)

    s = Scenario("A distance of 0", seed=12, options=(60, 15, 50, 3))
    s.step([(0, 0.0), (1, 8.1), (3, 11.2)])
    s.step([(1, 8.1), (0, 0.0), (3, 11.2)])

    s = Scenario("Weights that are all 0 leave the particle nearest to the circle", seed=13,
                 options=(60, 15, 0.15, 2))
    s.step([(0, 1.5), (1, 6.75)])
    s.step([(1, 0.0), (0, 0.001)])
    s.step([(1, 0.001), (3, 0.0)])
    s.step([(0, 1.75), (1, 6.5)])

    s = Scenario("Options change between steps", seed=14, options=(60, 15, 0.15, 3))
    s.stand(6, 6)
    s.options(90, 30, 0.4, 4)
    s.stand(6.5, 6)
    s.options(30, 15, 0.1, 2)
    s.stand(7, 6)


def with_paths():
    corridor = [(1, 5, 15, 5), (15, 5, 15, 14), (1, 8, 1, 8)]
    s = Scenario("Walking along a corridor", seed=15, segments=corridor)
    for i in range(8):
        s.stand(5 + 0.8 * i, 4.5 + 0.1 * i)

    s = Scenario("A jump takes the foot nearest to the raw estimate", seed=16,
                 segments=[(17, 14, 17, 4), (1, 11, 19, 10), (18, 13, 3, 2), (6.2, 1, 6.2, 6)])
    s.stand(4, 4)
    s.report(1800.0, 1200.0)
    s.stand(4, 4)
    s.report(400.0, 750.0)
    s.stand(4, 4)
    s.stand(4, 4)
    s.report(780.0, 260.0)
    s.stand(4, 4)

    s = Scenario("A foot that is too far is refused", seed=17,
                 beacons=[(5, 3, 5, 3, 1)] + BEACONS[1:], segments=[(1, 6, 17, 6)])
    s.report(520.0, 290.0)
    s.stand(5.2, 3.3)
    s.report(520.0, 700.0)
    s.stand(5.2, 3.3)
    s.report(520.0, 290.0)
    s.stand(5.2, 3.3, steps=2)

    s = Scenario("A foot on the first end is refused, one on the second taken", seed=18,
                 beacons=[(5, 3, 5, 3, 1)] + BEACONS[1:],
                 segments=[(5, 2.9, 9, 2.9), (5.6, 1, 5.6, 3), (4.4, 1, 4.4, 9)])
    s.report(620.0, 340.0)
    s.stand(5.4, 3.5)

    s = Scenario("Positions on a path stand in the middle of steps", seed=19,
                 segments=[(2, 5, 16, 5)])
    s.stepping(100)
    for i in range(4):
        s.stand(4 + 0.7 * i, 4.5)
    s.stepping(150)
    s.report(1000.0, 800.0)
    s.stand(6.5, 4.5)


for group in (start_up, without_paths, weights, with_paths):
    group()
missing = {"draw of 0", "clamped", "not placed", "spread", "no weight", "far", "limited", "snapped",
           "held", "held on the path", "tie", "winner A", "winner B", "refused", "refused at first",
           "stepping", "point for a segment", "before", "first end", "beyond"} - TAKEN
assert not missing, f"never taken: {missing}"
