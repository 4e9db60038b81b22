"""The measures of tools/pellet_modes.py against cases that one can work out by hand."""

import math
import unittest
from random import Random

import numpy as np
import pellet_modes as modes

LOST = 1_000_000
SQUARE = [(0, 0), (1000, 0), (2000, 0), (1000, 1000)]


def records(*rows):
    """Positions from one dictionary per record: pellet -> (x, y) in thousandths of a millimetre."""
    um = np.zeros((len(rows), 16))
    for record, pellets in enumerate(rows):
        for pellet, position in pellets.items():
            um[record, 2 * pellet - 2 : 2 * pellet] = position
    return um


def tip(*positions):
    return records(*({3: position} for position in positions))


def rendered(mode, um, a=0, b=0, palate=SQUARE):
    return list(modes.rendered(mode, um, palate, a, b))


class Distances(unittest.TestCase):
    def test_distance_3_4_is_the_hypotenuse(self):
        um = records({3: (1000, 2000), 4: (4000, 6000)})
        self.assertEqual(rendered("distance_3_4", um), [5.0])

    def test_distance_between_any_two(self):
        um = records({1: (0, 5000), 8: (12000, 0)}, {1: (0, 0), 8: (0, LOST)}, {1: (0, 7), 8: (0, 9)})
        np.testing.assert_allclose(rendered("distance", um, 1, 8), [13.0, 0.0, 0.002], rtol=1e-15)

    def test_just_below_the_threshold_is_a_position(self):
        um = records({3: (LOST - 1, 0), 4: (0, 0)}, {3: (LOST, 0), 4: (0, 0)})
        self.assertEqual(rendered("distance_3_4", um), [999.999, 0.0])


class Bend(unittest.TestCase):
    def test_left_turn_is_positive(self):
        self.assertAlmostEqual(rendered("bend", records({3: (0, 0), 4: (3000, 0), 5: (3000, 9)}))[0], 3.0, 12)

    def test_right_turn_by_thirty_degrees(self):
        far = (4000 + 2000 * math.cos(math.pi / 6), -2000 * 0.5)
        self.assertAlmostEqual(rendered("bend", records({3: (0, 0), 4: (4000, 0), 5: far}))[0], -2.0, 12)

    def test_is_length_times_sine_of_the_difference_of_angles(self):
        rng = Random(5)
        um = np.array([[rng.uniform(-60000, 20000) for _ in range(16)] for _ in range(200)])
        for row, value in zip(um, rendered("bend", um)):
            x, y = row[4::2], row[5::2]
            turn = math.atan2(y[2] - y[1], x[2] - x[1]) - math.atan2(y[1] - y[0], x[1] - x[0])
            self.assertAlmostEqual(value, math.hypot(x[1] - x[0], y[1] - y[0]) * math.sin(turn) / 1000, 9)


class Movement(unittest.TestCase):
    def test_velocity_of_the_height(self):
        um = tip((5, 0), (7, 6866), (9, 6866), (0, LOST), (0, 0), (0, -6866))
        self.assertEqual(rendered("velocity", um), [0.0, 1000.0, 0.0, 0.0, 0.0, -1000.0])

    def test_velocity_does_not_need_x(self):
        self.assertEqual(rendered("velocity", tip((LOST, 0), (LOST, 6866))), [0.0, 1000.0])

    def test_acceleration_is_a_thousand_times_the_change_of_velocity(self):
        um = tip((0, 0), (0, 6866), (0, 20598), (0, 20598), (0, LOST), (0, 0), (0, 6866), (0, 6866))
        expected = [0.0, 0.0, 1e6, -2e6, 0.0, 0.0, 0.0, -1e6]
        np.testing.assert_allclose(rendered("acceleration", um), expected, rtol=1e-12)

    def test_speed_starts_at_the_origin_and_spans_gaps(self):
        um = tip((3000, 4000), (3000, 4000), (LOST, 0), (0, LOST), (3000, 10866))
        np.testing.assert_allclose(rendered("speed", um), [5 / 6.866, 0, 0, 0, 1], rtol=1e-12)

    def test_tangential_acceleration_starts_from_rest(self):
        um = tip((0, 6866), (6866, 6866), (6866, LOST), (6866, 20598), (6866, 20598))
        expected = [1000 / 6.866, 0, 0, 1000 / 6.866, -2000 / 6.866]
        np.testing.assert_allclose(rendered("tangential_acceleration", um), expected, rtol=1e-12)


class Palate(unittest.TestCase):
    def test_nearest_point_but_never_the_last(self):
        um = tip((1000, 1000), (2100, 0), (0, LOST))
        np.testing.assert_allclose(rendered("palate", um), [1.0, 0.1, 0.0], rtol=1e-12)
        self.assertEqual(rendered("palate", um, a=1), [2.0, 3.0, 0.0])

    def test_the_first_of_equally_near_points(self):
        self.assertEqual(rendered("palate", tip((500, 0)), a=1), [1.0])

    def test_nothing_to_search(self):
        um = tip((1, 1), (LOST, 0))
        self.assertEqual(rendered("palate", um, palate=SQUARE[:1]), [1000.0, 0.0])
        self.assertEqual(rendered("palate", um, a=1, palate=SQUARE[:1]), [1.0, 0.0])

    def test_no_point_beyond_2048(self):
        line = [(10 * i, 0) for i in range(4096)]
        um = tip((20470, 0), (20480, 0))
        self.assertEqual(rendered("palate", um, palate=line), [0.0, 0.01])
        self.assertEqual(rendered("palate", um, a=1, palate=line), [2048.0, 2048.0])


class Held(unittest.TestCase):
    def test_spans_at_10_kHz(self):
        signal = modes.held([1.0, 2.0, 3.0, 4.0], 0.1, 300)
        expected = [1.0] * 34 + [2.0] * (102 - 34) + [3.0] * (171 - 102) + [4.0] * (240 - 171) + [0.0] * 60
        self.assertEqual(list(signal), expected)

    def test_slow_sampling_skips_records(self):
        # The spans end at 3.4, 10.3, 17.2, 24.0 and 30.9 ms: those of records 1 and 3 hold no whole sample.
        self.assertEqual(list(modes.held([1.0, 2.0, 3.0, 4.0, 5.0], 10.0, 5)), [2.0, 4.0, 5.0, 0.0, 0.0])

    def test_compare_names_the_first_difference(self):
        self.assertIsNone(modes.compare(np.array([1.0, 2.0]), np.array([1.0, 2.0 + 1e-7])))
        self.assertIn("first number 1", modes.compare(np.array([1.0, 2.0]), np.array([1.0, 2.1])))
        self.assertIn("1 samples instead of 2", modes.compare(np.array([1.0, 2.0]), np.array([1.0])))


if __name__ == "__main__":
    unittest.main()
