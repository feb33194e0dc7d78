#!/usr/bin/python3
# Vantorel. MIT licence, see LICENSE.
# The soak's arithmetic on made-up samples whose slope is known.

import random
import unittest

import trend


def walk(seed, count, keep):
    """Noise of spread 1 whose neighbours resemble each other by `keep`."""
    source, value, noise = random.Random(seed), 0.0, []
    for _ in range(count):
        value = keep * value + (1 - keep * keep) ** 0.5 * source.gauss(0, 1)
        noise.append(value)
    return noise


class TrendTest(unittest.TestCase):
    """Fitted slopes, their errors, and what is made of them."""

    def test_exact_line(self):
        times = list(range(100))
        found = trend.fit(times, [5 + time / 3600 for time in times])
        self.assertAlmostEqual(found.slope, 1.0)
        self.assertAlmostEqual(found.error, 0.0)
        self.assertEqual(trend.verdict(found, 0.9), "GROWS")
        self.assertEqual(trend.verdict(found, 1.1), "flat")

    def test_constant(self):
        self.assertEqual(trend.verdict(trend.fit(list(range(50)), [7] * 50), 0), "flat")

    def test_too_few(self):
        self.assertIsNone(trend.fit([1, 2, 3], [1, 2, 3]))
        self.assertEqual(trend.verdict(None, 1), "not decided")

    def test_noise_hides_a_slope_that_is_too_small_for_it(self):
        times = list(range(200))
        found = trend.fit(times, walk(1, 200, 0.5))
        self.assertEqual(trend.verdict(found, 1), "not decided")

    def test_a_leak_in_noise_is_found(self):
        times = list(range(0, 1200, 2))
        values = [each + time * 20 / 3600 for each, time in zip(walk(2, 600, 0.5), times)]
        found = trend.fit(times, values)
        self.assertEqual(trend.verdict(found, 1), "GROWS")
        self.assertLess(abs(found.slope - 20), 3 * found.error)

    def test_the_error_is_honest_where_neighbours_resemble_each_other(self):
        times, outside = list(range(300)), 0
        for seed in range(200):
            found = trend.fit(times, walk(seed, 300, 0.9))
            outside += abs(found.slope) > trend.SURE * found.error
        self.assertLess(outside / 200, 0.15)


if __name__ == "__main__":
    unittest.main()
