# data_fitting_scipy: the rows of data_fitting_bench as SciPy and NumPy do them.
# SPDX-License-Identifier: MIT
import time

import numpy
from scipy.interpolate import CubicSpline

POINTS, SITES, ROUNDS = 1000, 1000000, 7


def row(what, items, call):
    best = float('inf')
    for _ in range(ROUNDS):
        start = time.perf_counter()
        call()
        best = min(best, time.perf_counter() - start)
    print('%-44s %9s   %-28s %9.3f' % ('', '', 'SciPy ' + what, best / items * 1e9))


def main():
    random = numpy.random.default_rng(1)
    x = numpy.sort(random.uniform(size=POINTS))
    x[0], x[-1] = 0, 1
    y = numpy.sin(20 * x) + 0.1 * random.uniform(size=POINTS)
    sites, right = random.uniform(size=SITES), random.uniform(size=SITES)
    ascending = numpy.sort(sites)
    curve = CubicSpline(x, y, bc_type='natural')
    primitive = curve.antiderivative()
    row('construct natural', POINTS, lambda: CubicSpline(x, y, bc_type='natural'))
    row('evaluate, random', SITES, lambda: curve(sites))
    row('evaluate, sorted', SITES, lambda: curve(ascending))
    row('linear, sorted (NumPy)', SITES, lambda: numpy.interp(ascending, x, y))
    row('integrals', SITES, lambda: primitive(right) - primitive(sites))


main()
