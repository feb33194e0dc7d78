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

    def test_floor(self):
        self.assertEqual(trend.floor([1, 2, 3, 4, 5, 6, 7], [5, 4, 9, 8, 7, 6, 1]), ([2, 6], [4, 6]))
        self.assertEqual(trend.floor([1, 2], [5, 4]), ([], []))

    def test_states_that_pass_are_no_growth(self):
        times = list(range(0, 900, 13))
        values = [100 + 0.1 * each for each in walk(3, len(times), 0.5)]
        for place in (40, 44, 49, 55, 60, len(times) - 1):
            values[place] += 10
        self.assertNotEqual(trend.verdict(trend.fit(times, values), 1), "flat")
        self.assertEqual(trend.verdict(trend.fit(*trend.floor(times, values)), 1), "flat")

    def test_states_that_pass_hide_no_leak(self):
        times = list(range(0, 900, 13))
        values = [100 + 0.1 * each + time * 5 / 3600 for each, time in zip(walk(4, len(times), 0.5), times)]
        for place in range(5, 30, 4):
            values[place] += 10
        self.assertEqual(trend.verdict(trend.fit(*trend.floor(times, values)), 1), "GROWS")

    def test_steps_of_a_count_are_found(self):
        times = list(range(0, 900, 13))
        values = [30 + time // 150 + (3 if time % 5 == 0 else 0) for time in times]
        self.assertEqual(trend.verdict(trend.fit(*trend.floor(times, values)), 10), "GROWS")

    def test_the_error_is_honest_where_neighbours_resemble_each_other(self):
        times, outside = list(range(300)), 0
        for seed in range(200):
            found = trend.fit(times, walk(seed, 300, 0.9))
            outside += abs(found.slope) > trend.SURE * found.error
        self.assertLess(outside / 200, 0.15)


if __name__ == "__main__":
    unittest.main()
