#include "ozmatrix.h"

#include "element_types.h"
#include "report_recorder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{
/// Shows what is inside a matrix.
template <class T>
class Probe : public OzMatrix<T>
{
public:
  using OzMatrix<T>::OzMatrix;

  std::vector<T> stored() const { return std::vector<T>(this->cells.begin(), this->cells.end()); }

  std::ptrdiff_t offset_of_rows() const { return offset(&this->rows_); }
  std::ptrdiff_t offset_of_columns() const { return offset(&this->columns_); }
  std::ptrdiff_t offset_of_cells() const { return offset(&this->cells); }

private:
  std::ptrdiff_t offset(void const* member) const
  {
    return static_cast<char const*>(member) -
           reinterpret_cast<char const*>(static_cast<OzMatrix<T> const*>(this));
  }
};

/// A matrix in which element (r, c) is 10 * (r + 1) + c + 1.
Probe<double> numbered(std::uint64_t rows, std::uint64_t columns)
{
  Probe<double> matrix(rows, columns);
  for (std::uint64_t r = 0; r < rows; ++r)
  {
    for (std::uint64_t c = 0; c < columns; ++c)
      matrix(r, c) = static_cast<double>(10 * (r + 1) + c + 1);
  }
  return matrix;
}

TEST(OzMatrix, StartsWithoutElements)
{
  Probe<double> const matrix;

  EXPECT_EQ(matrix.rows(), 0u);
  EXPECT_EQ(matrix.columns(), 0u);
  EXPECT_TRUE(matrix.stored().empty());
}

TEST(OzMatrix, OfAGivenShapeHoldsDefaults)
{
  Probe<double> const matrix(2, 3);

  EXPECT_EQ(matrix.rows(), 2u);
  EXPECT_EQ(matrix.columns(), 3u);
  EXPECT_EQ(matrix.stored(), std::vector<double>(6, 0.0));
}

TEST(OzMatrix, StoresColumnByColumn)
{
  Probe<double> const matrix = numbered(2, 3);

  EXPECT_EQ(matrix.stored(), (std::vector<double>{11, 21, 12, 22, 13, 23}));
  EXPECT_EQ(matrix(1, 0), 21);
  EXPECT_EQ(matrix(0, 2), 13);
}

TEST(OzMatrix, AccessInRangeIsNotReported)
{
  Probe<double> matrix = numbered(2, 3);
  OzMatrix<double> const& constant = matrix;
  ReportRecorder const recorder;

  matrix(1, 2) = 5;

  EXPECT_EQ(constant(1, 2), 5);
  EXPECT_EQ(&constant(0, 1), &matrix(0, 1));
  EXPECT_EQ(recorder.units(), reports(0, ""));
}

TEST(OzMatrix, ReportsARowAndAColumnEachForItselfAndThenUsesThem)
{
  using Units = std::vector<std::string>;
  Probe<double> matrix = numbered(2, 3);
  matrix.resize(4, 4); // so that there is memory behind each index that is tried
  matrix.resize(2, 3);
  OzMatrix<double> const& constant = matrix;
  struct
  {
    char const* what;
    std::uint64_t row;
    std::uint64_t column;
    Units units;
  } const cases[] = {
      {"row at its end, a cell of the next column", 2, 0, {"ozmatrix_t.h"}},
      {"row at its end in the last column", 2, 2, {"ozmatrix_t.h", "ozarray_i.h"}},
      {"column at its end", 1, 3, {"ozmatrix_t.h", "ozarray_i.h"}},
      {"both", 2, 3, {"ozmatrix_t.h", "ozmatrix_t.h", "ozarray_i.h"}},
  };
  for (auto const& c : cases)
  {
    double const* const first = &matrix(0, 0);
    ReportRecorder recorder;

    EXPECT_EQ(&matrix(c.row, c.column), first + c.column * 2 + c.row) << c.what;
    EXPECT_EQ(recorder.units(), c.units) << c.what;
    recorder.clear();

    EXPECT_EQ(&constant(c.row, c.column), first + c.column * 2 + c.row) << c.what;
    EXPECT_EQ(recorder.units(), c.units) << c.what;
  }
}

std::vector<int> lines_of_reports;

void note_line(char const*, int line)
{
  lines_of_reports.push_back(line);
}

TEST(OzMatrix, RowAndColumnAreSeparateChecksInEachForm)
{
  Probe<double> matrix = numbered(4, 4);
  matrix.resize(2, 2);
  OzMatrix<double> const& constant = matrix;
  lines_of_reports.clear();
  dkb_assertion_handler = &note_line;

  static_cast<void>(matrix(2, 0));
  static_cast<void>(matrix(0, 1));
  static_cast<void>(constant(2, 0));
  static_cast<void>(matrix(1, 2));
  static_cast<void>(constant(1, 2));
  dkb_assertion_handler = nullptr;

  ASSERT_EQ(lines_of_reports.size(), 6u); // the bad columns are reported by the array again, on one line each
  std::vector<int> const matrix_lines{lines_of_reports[0], lines_of_reports[1], lines_of_reports[2],
                                      lines_of_reports[4]};
  EXPECT_LT(matrix_lines[0], matrix_lines[2]);
  EXPECT_LT(matrix_lines[2], matrix_lines[1]);
  EXPECT_LT(matrix_lines[1], matrix_lines[3]);
}

TEST(OzMatrix, AccessOutOfRangeIsMadeWithoutAHandler)
{
  Probe<double> matrix = numbered(2, 2);

  EXPECT_EQ(matrix(2, 0), 12);
}

TEST(OzMatrix, GrownKeepsCoordinatesAndFillsUpWithZeros)
{
  Probe<double> matrix = numbered(2, 2);

  matrix.resize(3, 3);

  EXPECT_EQ(matrix(1, 1), 22);
  EXPECT_EQ(matrix.stored(), (std::vector<double>{11, 21, 0, 12, 22, 0, 0, 0, 0}));
  EXPECT_EQ(matrix.rows(), 3u);
  EXPECT_EQ(matrix.columns(), 3u);
}

TEST(OzMatrix, ReshapeKeepsWhatIsInBothShapes)
{
  struct
  {
    std::uint64_t rows;
    std::uint64_t columns;
    std::vector<double> stored;
  } const cases[] = {
      {3, 2, {11, 21, 31, 12, 22, 32}},
      {2, 3, {11, 21, 12, 22, 13, 23}},
      {1, 4, {11, 12, 13, 0}},
      {4, 1, {11, 21, 31, 0}},
      {5, 0, {}},
      {0, 5, {}},
      {0, 0, {}},
  };
  for (auto const& c : cases)
  {
    Probe<double> matrix = numbered(3, 3);

    matrix.resize(c.rows, c.columns);

    EXPECT_EQ(matrix.stored(), c.stored) << c.rows << " by " << c.columns;
    EXPECT_EQ(matrix.rows(), c.rows);
    EXPECT_EQ(matrix.columns(), c.columns);
  }
}

TEST(OzMatrix, GrowsOutOfAShapeWithoutCells)
{
  Probe<double> matrix(0, 3);

  matrix.resize(2, 2);

  EXPECT_EQ(matrix.stored(), std::vector<double>(4, 0.0));
}

TEST(OzMatrix, CopiesAreIndependent)
{
  Probe<double> original = numbered(2, 2);

  Probe<double> copy(original);
  Probe<double> assigned;
  assigned = original;
  original(0, 0) = 99;

  EXPECT_EQ(copy.stored(), (std::vector<double>{11, 21, 12, 22}));
  EXPECT_EQ(assigned.stored(), (std::vector<double>{11, 21, 12, 22}));
  EXPECT_EQ(assigned.rows(), 2u);
  EXPECT_EQ(assigned.columns(), 2u);
}

TEST(OzMatrix, AnImpossibleShapeThrowsAndChangesNothing)
{
  constexpr std::uint64_t huge = ~std::uint64_t(0);
  struct
  {
    std::uint64_t rows;
    std::uint64_t columns;
  } const shapes[] = {
      {huge, huge}, {huge, 2}, {2, huge}, {huge, 1}, {1ull << 32, 1ull << 32}, {1ull << 31, 1ull << 31}};
  for (auto const& shape : shapes)
  {
    Probe<double> matrix = numbered(2, 2);

    EXPECT_THROW(matrix.resize(shape.rows, shape.columns), std::bad_alloc)
        << shape.rows << ' ' << shape.columns;

    EXPECT_EQ(matrix.rows(), 2u);
    EXPECT_EQ(matrix.columns(), 2u);
    EXPECT_EQ(matrix.stored(), (std::vector<double>{11, 21, 12, 22}));
  }
}

/// Runs `action` on a matrix so often that each of its copies throws once. Each time the matrix is as it
/// was, and nothing is left over. Returns how many copies there are to fail.
template <class Action>
int fails_at_each_copy_without_a_trace(Action const& action)
{
  for (int n = 1;; ++n)
  {
    Probe<CountedElement> matrix(2, 2);
    matrix(1, 1) = 7;
    std::vector<CountedElement> const before = matrix.stored();
    int const live = CountedElement::live;
    CountedElement::copies_until_throw = n;
    try
    {
      action(matrix);
      CountedElement::copies_until_throw = 0;
      return n - 1;
    }
    catch (std::runtime_error const&)
    {
    }
    EXPECT_EQ(CountedElement::live, live) << "copy " << n;
    EXPECT_EQ(matrix.rows(), 2u) << "copy " << n;
    EXPECT_EQ(matrix.columns(), 2u) << "copy " << n;
    EXPECT_EQ(matrix.stored(), before) << "copy " << n;
  }
}

TEST(OzMatrix, IsAsItWasWhenACopyThrows)
{
  Probe<CountedElement> const other(3, 1);

  EXPECT_EQ(fails_at_each_copy_without_a_trace([](auto& matrix) { matrix.resize(3, 3); }), 4 + 9);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([](auto& matrix) { matrix.resize(1, 2); }), 2 + 2);
  EXPECT_EQ(fails_at_each_copy_without_a_trace([&](auto& matrix) { matrix = other; }), 3);
}

// The pointer to the virtual table comes first.
TEST(OzMatrix, FieldsStandInTheirOrder)
{
  Probe<double> const matrix;

  EXPECT_EQ(matrix.offset_of_rows(), 8);
  EXPECT_EQ(matrix.offset_of_columns(), 16);
  EXPECT_EQ(matrix.offset_of_cells(), 24);
  EXPECT_EQ(sizeof(OzMatrix<double>), 24 + sizeof(OzArray<double>));
}

TEST(OzMatrix, IsDestroyedThroughItsBase)
{
  CountedElement::reset();
  OzMatrix<CountedElement>* const matrix = new Probe<CountedElement>(2, 3);

  delete matrix;

  EXPECT_EQ(CountedElement::live, 0);
}

TEST(OzMatrix, AgreesWithATableOfRowsAtEachOfManyRandomReshapes)
{
  std::mt19937 random(7);
  Probe<double> matrix;
  std::vector<std::vector<double>> model; // by rows
  std::uint64_t columns = 0;
  double next = 1.0;
  for (int step = 0; step < 3000; ++step)
  {
    std::uint64_t const rows = random() % 6;
    columns = random() % 6;
    matrix.resize(rows, columns);
    model.resize(rows);
    for (std::vector<double>& row : model)
      row.resize(columns);

    if (rows != 0 && columns != 0)
    {
      std::uint64_t const r = random() % rows;
      std::uint64_t const c = random() % columns;
      matrix(r, c) = next;
      model[r][c] = next++;
    }
    else
    {
      for (std::vector<double>& row : model)
        row.clear();
    }

    for (std::uint64_t r = 0; r < rows; ++r)
    {
      for (std::uint64_t c = 0; c < columns; ++c)
        ASSERT_EQ(matrix(r, c), model[r][c]) << "step " << step << ", (" << r << ", " << c << ')';
    }
  }
}
} // namespace
