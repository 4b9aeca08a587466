"""The errors of results, by arithmetic of 400 bits, in the sense of docs/trust.md.

Matrices are lists of rows. gmpy2 makes the sums and products; singular values and eigenvalues are
those of mpmath.
"""
import gmpy2
from gmpy2 import mpc, mpfr
from mpmath import mp

BITS = 400
gmpy2.get_context().precision = BITS
mp.prec = BITS
ZERO, ONE = mpfr(0), mpfr(1)


class Skip(Exception):
    """Nobody can say what is right here."""


class Singular(Exception):
    """There is no right answer: any is wrong."""


# --- Matrices ---

def exact(a):
    return [[mpc(x) if isinstance(x, complex) else mpfr(x) for x in row] for row in a]


def transposed(a):
    return [list(column) for column in zip(*a)]


def inner(x, y):
    return sum((p * q for p, q in zip(x, y)), ZERO)


def times(a, b):
    columns = transposed(b)
    return [[inner(row, c) for c in columns] for row in a]


def apply(a, v):
    return [inner(row, v) for row in a]


def minus(a, b):
    return [[x - y for x, y in zip(p, q)] for p, q in zip(a, b)]


def divided(a, size):
    return [[x / size for x in row] for row in a]


def largest(a):
    return max((abs(x) for row in a for x in row), default=ZERO)


def length(v):
    return gmpy2.sqrt(sum((gmpy2.norm(x) if isinstance(x, mpc_type) else x * x for x in v), ZERO))


mpc_type, mpfr_type = type(mpc(0)), type(ZERO)


def frobenius(a):
    return length([x for row in a for x in row])


def normalized(a):
    size = largest(a)
    return divided(a, size) if size else a


def relative(x, y):
    """The largest difference against the largest element of the truth y."""
    size = largest(y)
    if size == 0:
        return ZERO if largest(x) == 0 else ONE
    return largest(minus(x, y)) / size


def not_orthogonal(q):
    p = times(transposed(q), q)
    return max(abs(x - (i == j)) for i, row in enumerate(p) for j, x in enumerate(row))


def exponent(x):
    return max(gmpy2.get_exp(p) for p in (x.real, x.imag) if p != 0)


def even_factors(a):
    """Powers of two of rows and columns that bring them to one size, and the matrix with them."""
    e = [[exponent(x) if x != 0 else None for x in row] for row in a]
    rows, cols = [0] * len(a), [0] * len(a[0])
    for _ in range(12):
        moved = 0
        for own, other, lines in ((rows, cols, e), (cols, rows, list(zip(*e)))):
            for i, line in enumerate(lines):
                most = max((x + other[j] for j, x in enumerate(line) if x is not None), default=None)
                if most is not None:
                    step = -round((most + own[i]) / 2)
                    own[i] += step
                    moved = max(moved, abs(step))
        if moved == 0:
            break
    return rows, cols, [[x * gmpy2.exp2(rows[i] + cols[j]) for j, x in enumerate(row)] for i, row in enumerate(a)]


def even(a):
    return even_factors(a)[2]


def solved(a, b):
    """X with A X = B."""
    rows, cols, m = even_factors(a)
    n = len(m)
    m = [row + [x * gmpy2.exp2(rows[i]) for x in b[i]] for i, row in enumerate(m)]
    for k in range(n):
        p = max(range(k, n), key=lambda i: abs(m[i][k]))
        if abs(m[p][k]) < gmpy2.exp2(10 - BITS) * n:
            raise Singular
        m[k], m[p] = m[p], m[k]
        pivot = m[k]
        for i in range(k + 1, n):
            if m[i][k] != 0:
                f, row = m[i][k] / pivot[k], m[i]
                m[i] = row[:k + 1] + [x - f * y for x, y in zip(row[k + 1:], pivot[k + 1:])]
    for k in range(n - 1, -1, -1):
        x = [y / m[k][k] for y in m[k][n:]]
        m[k] = x
        for i in range(k):
            f = m[i][k]
            m[i] = m[i][:n] + [y - f * z for y, z in zip(m[i][n:], x)]
    return [[y * gmpy2.exp2(cols[k]) for y in row] for k, row in enumerate(m)]


def unit_matrix(n):
    return [[ONE if i == j else ZERO for j in range(n)] for i in range(n)]


def inverse(a):
    return solved(a, unit_matrix(len(a)))


# --- What mpmath works out ---

def to_mp(x):
    if isinstance(x, mpc_type):
        return mp.mpc(to_mp(x.real), to_mp(x.imag))
    mantissa, power = x.as_mantissa_exp()
    return mp.ldexp(mp.mpf(int(mantissa)), int(power))


def from_mp(x):
    if isinstance(x, mp.mpc):
        return mpc(from_mp(x.real), from_mp(x.imag))
    sign, mantissa, power, _ = x._mpf_
    return mpfr(mantissa) * gmpy2.exp2(power) * (-1 if sign else 1)


def mp_matrix(a):
    return mp.matrix([[to_mp(x) for x in row] for row in a])


def has_imaginary(a):
    return any(isinstance(x, mpc_type) for row in a for x in row)


def singular_values(a):
    a = a if len(a) >= len(a[0]) else transposed(a)
    s = (mp.svd_c if has_imaginary(a) else mp.svd_r)(mp_matrix(a), compute_uv=False)
    return sorted((from_mp(x) for x in s), reverse=True)


def eigenvalues(a):
    if len(a) == 1:
        return [a[0][0]]
    try:
        return [from_mp(z) for z in mp.eig(mp_matrix(a), left=False, right=False)]
    except (RuntimeError, ZeroDivisionError):
        raise Skip


def clear_rank(a):
    """The rank where the singular values leave no doubt."""
    s = singular_values(a)
    if s[0] == 0:
        return 0
    noise = max(len(a), len(a[0])) * gmpy2.exp2(-52) * s[0]
    if any(noise / 4 < x < noise * 200 for x in s):
        raise Skip
    return sum(1 for x in s if x > noise)


# --- The errors of results ---

def solve_error(args, x):
    return relative(x, solved(*map(exact, args)))


def inverse_error(args, x):
    return relative(x, inverse(exact(args[0])))


def lu_error(args, parts):
    p, l, u = parts
    pa = times(p, exact(args[0]))
    d = minus(pa, times(l, u))
    return max(largest([e]) / (largest([row]) or 1) for e, row in zip(d, pa))


def cholesky_error(args, l):
    a = exact(args[0])
    n = len(a)
    t = [[ZERO] * n for _ in range(n)]
    for j in range(n):
        for i in range(j, n):
            left = a[i][j] - inner(t[i][:j], t[j][:j])
            if i == j and left <= 0:
                raise Singular
            t[i][j] = gmpy2.sqrt(left) if i == j else left / t[j][j]
    return max(abs(l[i][j] - t[i][j]) / gmpy2.sqrt(a[i][i]) for i in range(n) for j in range(i + 1))


def qr_error(args, parts):
    a, (q, r) = exact(args[0]), parts
    worst = not_orthogonal(q)
    for j, (d, column, of_r) in enumerate(zip(*map(transposed, (minus(a, times(q, r)), a, r)))):
        size = largest([column])
        if size:
            worst = max(worst, largest([d]) / size, largest([of_r[j + 1:]]) / size)
    return worst


def pivots_of(r):
    found = []
    for c, column in enumerate(transposed(r)):
        if len(found) < len(r) and column[len(found)] == 1 and sum(1 for x in column if x) == 1:
            found.append(c)
    return found


def rref_error(args, r):
    a = exact(args[0])
    rank, pivots = clear_rank(even(a)), pivots_of(r)
    if rank != len(pivots):
        return ONE
    if rank == 0:
        return ZERO
    a = normalized(a)
    b = [[row[c] for c in pivots] for row in a]
    s = singular_values(even(b))
    if s[-1] < s[0] * 1e-15:
        return ONE
    worst, size = ZERO, ONE
    for j in range(len(a[0])):
        if j in pivots:
            continue
        sizes = [largest([row]) or ONE for row in b]
        c = [[row[j] / s] for row, s in zip(a, sizes)]
        d = [[x / s for x in row] for row, s in zip(b, sizes)]
        y = solved(times(transposed(d), d), times(transposed(d), c))
        worst = max([worst] + [abs(r[k][j] - y[k][0]) for k in range(rank)] + [abs(row[j]) for row in r[rank:]])
        size = max(size, largest(y))
    return worst / size


def rank_error(args, value):
    return ZERO if clear_rank(even(exact(args[0]))) == int(value) else ONE


def geninv_error(args, x):
    a = exact(args[0])
    rank = clear_rank(a)
    u, s, v = mp.svd_r(mp_matrix(a))
    t = [[ZERO] * len(a) for _ in a[0]]
    for k in range(rank):
        left, right, value = [from_mp(z) for z in u[:, k]], [from_mp(z) for z in v[k, :]], from_mp(s[k])
        t = [[y + p * q / value for y, q in zip(row, left)] for row, p in zip(t, right)]
    return relative(x, t)


def norm_of(a, kind):
    if kind == 'e':
        return frobenius(a)
    if kind == '2':
        size = largest(a)
        return singular_values(divided(a, size))[0] * size if size else size
    return max(sum(abs(x) for x in line) for line in (a if kind == 'i' else transposed(a)))


def norm_error(kind):
    def error(args, value):
        t = norm_of(exact(args[0]), kind)
        return abs(value - t) / t if t else abs(value)
    return error


def cond_error(kind):
    def error(args, value):
        a = exact(args[0])
        t = norm_of(a, kind) * norm_of(inverse(a), kind)
        return abs(value - t) / t
    return error


def paired(x, y, distance):
    """The largest distance of pairs, the nearest taken first; what is left of y."""
    pairs = sorted((distance(a, b), i, j) for i, a in enumerate(x) for j, b in enumerate(y))
    left, right, worst = set(range(len(x))), set(range(len(y))), ZERO
    for d, i, j in pairs:
        if i in left and j in right:
            left.discard(i)
            right.discard(j)
            worst = max(worst, d)
    return worst, [y[j] for j in right]


def eigenvals_error(args, x):
    a = exact(args[0])
    size = largest(a)
    if size == 0:
        return largest(x)
    truth = eigenvalues(divided(a, size))
    worst, _ = paired([row[0] / size for row in x], truth, lambda p, q: abs(p - q))
    most = largest([truth])
    # All of a nilpotent matrix are 0; what is small then is so against the matrix.
    return worst / (most if most > 1e-30 else 1)


def conjugate(v):
    return [x.conjugate() for x in v]


def residual(a, size, v):
    of_v = length(v)
    if of_v == 0:
        return ONE
    w = apply(a, v)
    rho = inner(conjugate(v), w) / of_v ** 2
    return max(abs(of_v - 1), length([p - rho * q for p, q in zip(w, v)]) / size)


def eigenvecs_error(args, v):
    a = normalized(exact(args[0]))
    size = frobenius(a)
    return max(residual(a, size, c) for c in transposed(v)) if size else ZERO


def chordal(x, y):
    a, b = abs(x), abs(y)
    return abs(x - y) / gmpy2.sqrt((1 + a * a) * (1 + b * b))


def genvals_error(args, x):
    m, n = map(exact, args)
    of_m, of_n = largest(m), largest(n)
    if not of_m or not of_n:
        raise Skip
    m, n = divided(m, of_m), divided(n, of_n)
    c, s = mpfr(3) / 5, mpfr(4) / 5
    turned_m = [[c * p + s * q for p, q in zip(*rows)] for rows in zip(m, n)]
    turned_n = [[c * q - s * p for p, q in zip(*rows)] for rows in zip(m, n)]
    truth = []
    for mu in eigenvalues(solved(turned_n, turned_m)):
        below = c + s * mu
        truth.append((c * mu - s) / below if abs(below) > mpfr(10) ** -60 else mpfr(10) ** 60)
    if len(x) > len(truth):
        return ONE
    worst, rest = paired([row[0] * of_n / of_m for row in x], truth, chordal)
    return max([worst] + [ONE for z in rest if abs(z) < 1e5])


def genvecs_error(args, v):
    m, n = (divided(a, frobenius(a) or ONE) for a in map(exact, args))
    worst = ZERO
    for x in transposed(v):
        u, w = apply(m, x), apply(n, x)
        if length(u) < length(w):
            u, w = w, u
        if length(u):
            along = inner(conjugate(u), w) / length(u) ** 2
            w = [q - along * p for p, q in zip(u, w)]
        worst = max(worst, length(w), abs(length(x) - 1))
    return worst


def svd_error(args, parts):
    a, (u, v) = normalized(exact(args[0])), parts
    worst, before = max(not_orthogonal(u), not_orthogonal(v)), None
    size = frobenius(a) or ONE
    for of_u, w in zip(transposed(u), transposed(times(a, v))):
        s = inner(of_u, w)
        worst = max(worst, length([q - s * p for p, q in zip(of_u, w)]) / size, -s / size)
        if before is not None:
            worst = max(worst, (s - before) / size)
        before = s
    return worst


def svds_error(args, x):
    t = singular_values(exact(args[0]))
    return max(abs(row[0] - y) for row, y in zip(x, t)) / t[0] if t[0] else largest(x)
