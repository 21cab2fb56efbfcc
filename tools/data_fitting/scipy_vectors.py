#!/usr/bin/python3
# scipy_vectors: cubic splines as SciPy makes them, for tests/data_fitting/scipy_test.cpp.
# SPDX-License-Identifier: MIT
#
#   tools/data_fitting/scipy_vectors.py > tests/data/data_fitting/scipy.inc
#
# Random points and values from a fixed seed; CubicSpline with each kind of end, Akima1DInterpolator; coefficients in
# powers of t - x[i], lowest first; values, slopes and integrals from the first site at sites inside and beyond the
# points.
import numpy
import scipy
from scipy.interpolate import Akima1DInterpolator, CubicSpline

POINTS, SITES = 24, 16


def row(values):
    return '{' + ', '.join(float(v).hex() for v in numpy.ravel(values)) + '}'


def case(name, bc_type, ends, x, y, curve, sites):
    coefficients = numpy.asarray(curve.c)[::-1].T
    integrals = [curve.integrate(sites[0], s) for s in sites]
    print('{"%s", %d,' % (name, bc_type))
    for values in (ends, x, y, coefficients, sites, curve(sites), curve(sites, 1), integrals):
        print(' ' + row(values) + ',')
    print('},')


def main():
    random = numpy.random.default_rng(20240611)
    x = numpy.cumsum(random.uniform(0.2, 1.0, POINTS))
    y = random.normal(size=POINTS)
    sites = numpy.concatenate((random.uniform(x[0], x[-1], SITES - 2), [x[0] - 0.25, x[-1] + 0.25]))
    print('// Made by tools/data_fitting/scipy_vectors.py with SciPy %s.' % scipy.__version__)
    print('// SPDX-License-Identifier: MIT')
    a, b = 0.75, -1.5
    for name, bc_type, ends, bc in (
            ('not-a-knot', 1, (0, 0), 'not-a-knot'),
            ('natural', 2, (0, 0), 'natural'),
            ('first, first', 12, (a, b), ((1, a), (1, b))),
            ('first, second', 36, (a, b), ((1, a), (2, b))),
            ('second, first', 24, (a, b), ((2, a), (1, b))),
            ('second, second', 48, (a, b), ((2, a), (2, b)))):
        case(name, bc_type, ends, x, y, CubicSpline(x, y, bc_type=bc), sites)
    closed = numpy.append(y[:-1], y[0])
    case('periodic', 64, (0, 0), x, closed, CubicSpline(x, closed, bc_type='periodic', extrapolate=True), sites)
    case('akima', -1, (0, 0), x, y, Akima1DInterpolator(x, y), sites[:-2])


main()
