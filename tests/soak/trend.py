# Vantorel. MIT licence, see LICENSE.
# Straight lines through samples: how fast a figure grows, and how sure that is.

import math
from collections import namedtuple

Trend = namedtuple("Trend", "slope error")  # both per hour; error is one standard error of the slope

FEWEST = 12  # samples, below which no line is drawn
SURE = 2.0  # standard errors
NEIGHBOURS = 3  # samples, of which the least counts


def floor(times, values):
    """The least of each three neighbouring samples, at its time. What only passes, as a buffer of a drawing or of the
    allocator, makes single samples larger; what leaks is in all of them."""
    groups = [list(zip(values, times))[start:start + NEIGHBOURS] for start in range(0, len(values), NEIGHBOURS)]
    lowest = [min(group) for group in groups if len(group) == NEIGHBOURS]
    return [time for _, time in lowest], [value for value, _ in lowest]


def fit(times, values):
    """The least-squares slope of values over times in seconds. The standard error takes into account that neighbouring
    samples resemble each other: memory moves in steps, and many samples of one step are no more than one. None when
    there are too few samples."""
    count = len(times)
    if count < FEWEST:
        return None
    time_mean, value_mean = sum(times) / count, sum(values) / count
    spread = sum((time - time_mean) ** 2 for time in times)
    slope = sum((time - time_mean) * (value - value_mean) for time, value in zip(times, values)) / spread
    rest = [value - value_mean - slope * (time - time_mean) for time, value in zip(times, values)]
    square = sum(each * each for each in rest)
    if square <= 1e-12 * max(1.0, value_mean * value_mean):
        return Trend(slope * 3600, 0.0)
    alike = sum(one * other for one, other in zip(rest, rest[1:])) / square
    alike = min(max(alike, 0.0), 0.98)
    error = math.sqrt(square / (count - 2) / spread) * math.sqrt((1 + alike) / (1 - alike))
    return Trend(slope * 3600, error * 3600)


def verdict(trend, limit):
    """What a trend says of a limit per hour: "flat", "GROWS" when it is clearly above, else "not decided"."""
    if trend is None:
        return "not decided"
    if trend.slope - SURE * trend.error > limit:
        return "GROWS"
    return "flat" if trend.slope + SURE * trend.error <= limit else "not decided"
