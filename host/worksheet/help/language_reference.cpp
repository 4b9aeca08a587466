#include "host/worksheet/help/reference.hpp"

namespace worksheet {

const char* const kLanguageReference = R"(
## Elementary functions

### sqrt(z), exp(z), log(z), log2(z), log10(z)

The square root, the exponential, and the natural, binary and decimal logarithm, element by element;
complex where no real value exists. `sqrt` takes the root of a unit, too; the others want plain numbers.

### sin(z), cos(z), tan(z), asin(z), acos(z), atan(z)

The trigonometric functions of angles in radians and their inverses, element by element; complex where no
real value exists. An angle with a unit, as 30{deg}, is taken in radians.

### atan2(y, x)

The angle of the point (x, y) in radians, above -pi and up to pi, element by element. Both have one unit.

### sinh(z), cosh(z), tanh(z), asinh(z), acosh(z), atanh(z)

The hyperbolic functions and their inverses, element by element; complex where no real value exists.

### gamma(x)

The gamma function, element by element, of real and complex numbers: gamma(n + 1) is the factorial of n.

### abs(z), re(z), im(z), conj(z)

The magnitude, the real and the imaginary part, and the conjugate, element by element. Units stay.

### arg(z), sign(z)

The angle of a number in radians; its sign -1, 0 or 1, or z/abs(z) where z is complex. Element by element.

### hypot(x, y)

The square root of x^2 + y^2, without overflow on the way, element by element. Both have one unit.

### floor(x), ceil(x), round(x), trunc(x)

The nearest integer below, above or on either side of x, or towards zero. Element by element, for real plain
numbers. `round` takes a half away from zero: round(2.5) is 3. To round a quantity, divide it by its unit.

### mod(x, y)

The remainder of x/y, which has the sign of y. Element by element, for real numbers of one unit.

### max(a, b, ...), min(a, b, ...)

The larger and the smaller of several real numbers or matrices, element by element; NaN where one of them is
NaN. With a single matrix they are functions of the pack.

### if(c, a, b)

a when the number c is not 0, else b; only one of them is evaluated.

### digits(x)

How many decimal digits of the results of the pack's functions in the expression x hold: the least of them, 0
to 15. docs/trust.md says how that is found.

### pi

The ratio of a circle's circumference to its diameter.

## Building matrices

### zeros(m, n), ones(m, n)

An m x n matrix of zeros, or of ones. Zeros fit every unit; ones(3, 1){kN} has one.

### linspace(a, b, n)

A column of n numbers at equal distances from a to b, both included. a and b may have a unit.

### blocks([A, B; C, D])

One matrix of a nested array of matrices and plain numbers, each put at its place. Those beside one another
have equally many rows, those above one another equally many columns.

## Sums, counts and order

### sum(A), prod(A), mean(A)

The sum, the product and the mean of all elements. With a second argument, sum(A, 1) goes down each column
and gives a row, sum(A, 2) goes along each row and gives a column. `sum` and `mean` keep the unit, `prod`
multiplies it.

### any(A), all(A)

1 when some element, or every element, is not zero, else 0. A second argument is that of `sum`.

### cumsum(v)

The sums of the first elements, of the first two, and so on. A matrix needs the direction: cumsum(A, 1) goes
down each column, cumsum(A, 2) along each row.

### sort(v)

The elements in ascending order, NaN last, for real numbers; reverse(sort(v)) is the descending order. A matrix
needs the direction, 1 or 2, as in `cumsum`.

### find(v)

The indices of the elements that are not zero, counted from ORIGIN, as a column; of a matrix, two columns with
row and column indices, column by column. With no such element it has no rows.

### numel(A)

The number of elements; 1 for a number.

## Products and determinant

### dot(a, b)

The sum of conj(a[i])*b[i] over two vectors of equal length. Units are multiplied.

### cross(a, b)

The vector product of two vectors of three elements, in the shape of the first. Units are multiplied.

### det(A), trace(A)

The determinant of a square matrix, by elimination with partial pivoting; the sum of its diagonal. The unit of
the determinant of an n x n matrix is the n-th power of that of A.

## Data

### read("file"), read("file", "column")

A matrix from a table (CSV, TSV, columns apart by blanks) or a Matrix Market file, relative to the
worksheet; or one column of a table by its heading, with the unit that stands there, as in `F (kN)`.
"decimal: comma", "separator: tab" and "headings: none" say what the file does not tell.

### columns("file")

The headings of a table's columns, as a nested array.

### write("file", A, B)

Writes numbers and matrices side by side to a .csv or .tsv file, or one matrix to a .mtx file. A text
"heading: F" names the next column; units stand in the headings.

### real_only(A), with_imag(A), lean(A)

A without its imaginary array; with one, be it of zeros; without part arrays that hold only zeros.

## Pictures

### plot("file", x, y), scatter("file", x, y)

A curve through points, or the points alone, as an SVG or PNG file. Without x over the indices; several
pairs `x, y` give several curves, and so do the columns of a matrix y. A text behind a curve names it in
the legend; "title: ...", "x: ..." and "y: ..." label the picture and its axes.

### plot_eigenvals("file", A), plot_svds("file", A)

The eigenvalues of a matrix in the complex plane; its singular values over a logarithmic axis. A vector
is taken for the values themselves.

### heatmap("file", A)

A colour for each element of a matrix.

## The language

### statements

x = expr assigns, x += expr (`-=`, `*=`, `/=`) changes, f(i, j) = expr defines a function, P, L, U = lu(A) takes
the parts of a joined value, and an expression alone shows its value. A statement ends with its line or a `;`,
which keeps its value from being shown; an open bracket continues it, and `#` starts a comment.

### operators

From those that bind least: `||`, `&&`, comparisons, `a:b`, `+ -`, `* / \ .* ./`, signs and `!`, `^ .^`. Between
matrices `*` is the matrix product, A \ b solves A x = b (by least squares for a tall A), and A ^ n is the power
of a square matrix (`A^-1` the inverse, `A^0` the identity); all else works element by element and with a number.
`2i` is an imaginary number, "text" a text, `A'` the transpose, [1, 2; 3, 4] a matrix, and a matrix with matrices
or texts in it a nested array.

### ranges

0:n-1 and 0{m}:0.1{m}:6{m} are columns of numbers, from the first to the last in steps of 1 or of the one between.

### parts, end

A[i, :], A[:, j], A[i:k, j:l] and v[i:k] are parts of a matrix, A[v, w] that of vectors of indices; indices are
counted from ORIGIN, and `end` is the last. A[i, j] = x and A[i:k, j:l] += K assign to parts.

### for, while, break, continue

for k = 0:n-1, while c: repeat the lines up to `end`; `break` leaves the loop, `continue` goes on with the next
pass. A loop shows nothing.

### blocks, elseif, else

if c, elseif c, else: one of the blocks is evaluated; `end` closes them. if(c, a, b) is a function.

### functions

f(x, y) = (t = x^2; t + y) gives t a value for the rest of the parentheses.

### units

3{kN/m} attaches a unit, and x in {mm} brings a value to another one: an operator that binds less than
comparisons, and stands in parentheses and arguments too. A matrix has one unit as a whole.
Sums, functions and equations whose units do not fit are errors; a zero fits every unit. Results are shown
in units such as mA or kN m, unless one was asked for. Prefixes stand before the units that take them.

### variables, ORIGIN, TOL

ORIGIN (0 at first) is the index of the first element, TOL (1e-9) a tolerance; both may be assigned.
`last` and `submatrix` read ORIGIN, `eigenvals`, `genvals`, `genvecs` and `geninv` read TOL.

### format

format fix 3 shows numbers from now on with 3 digits behind the point, format sci 4 with 4 significant digits and a
power of ten, format eng 4 with a power of 1000, format auto 6 with up to 6 significant digits, as at first. format
alone says which it is. In format eng the unit gets the prefix that suits, unless one was asked for with `in`.

### who, clear, ans

who lists the variables with their kinds and units, clear forgets them, and clear x y forgets x and y.
ans is the value of the last expression that was shown.

### include

include "file.ws" runs the statements of another worksheet in this place. Names of files in it lead from
where it lies. An error in it says its file and line.

### help

help lists everything there is, and help NAME or ?NAME says what NAME is. At the prompt quit or exit
leaves.
)";

}  // namespace worksheet
