// The search for noisy-MAX parameters that reproduce a given table.

#include <algorithm>
#include <cstddef>
#include <limits>

#include "definitions/noisyMAX.h"
#include "foundation/resultCodes.h"

namespace {

constexpr double kLastStep = 0.0001;
constexpr int kMostMoves = 100000;  // an end for searches that gain next to nothing for very long

/// Moves a cell of a row by `size` and gives the others their share, so that the row keeps its sum.
void ApplyMove(double* row, int n, int column, double size) {
  const double old = row[column];
  for (int j = 0; j < n; j++) {
    if (j == column) continue;
    row[j] = old == 1.0 ? row[j] - size / (n - 1) : row[j] - row[j] / (1 - old) * size;
  }
  row[column] = old + size;
}

}  // namespace

/// Coordinate search over the parameters of a gate. Trial tables are never stored: their last
/// dimension is worked out cell by cell, and a trial ends where its error reaches the best one, as
/// later cells can only add to it.
class KVN_noisyMAX::Search {
 public:
  explicit Search(KVN_noisyMAX& theGate) : gate(theGate), n(theGate.ColumnCount()) {}

  int Prepare();
  void Run();

 private:
  struct Move {
    int cell = -1;
    double size = 0.0;
  };

  void Cumulated(int row);
  double Distance(double limit);
  double RowDistance(const double* product, const double* factor, const double* wanted);
  void Try(const Move& move, double& error, Move& best);

  KVN_noisyMAX& gate;
  const int n;
  KVN_intArray rowOf;  // row of each outcome of each parent
  KVN_intArray unitColumns;
  KVN_Dmatrix cumulative;   // of the gate's parameters
  KVN_doubleArray prefix;   // products of the leak and all parents but the last
  KVN_doubleArray product;  // one row
  KVN_doubleArray saved;    // the row of a trial
};

int KVN_noisyMAX::Search::Prepare() {
  const int lastCount = gate.BlockCount() == 0 ? 1 : gate.BlockSize(gate.BlockCount() - 1);
  if (int result = gate.RowsByOutcome(rowOf); result < 0) return result;
  if (int result = gate.UnitColumns(unitColumns); result < 0) return result;
  if (int result = cumulative.Assign(gate.parameters); result < 0) return result;
  if (int result = prefix.SetSize(gate.cpt.GetSize() / lastCount); result < 0) return result;
  if (int result = product.SetSize(n); result < 0) return result;
  if (int result = saved.SetSize(n); result < 0) return result;
  for (int row = 0; row < gate.RowCount(); row++) Cumulated(row);
  return 0;
}

/// Takes over one row of the gate's parameters.
void KVN_noisyMAX::Search::Cumulated(int row) {
  const double* source = gate.Row(row);
  double* target = cumulative.GetData() + row * n;
  target[n - 1] = source[n - 1];
  for (int j = n - 1; j > 0; j--) target[j - 1] = std::max(source[j - 1] + target[j], 0.0);
}

/// Squared distance of the table of the present parameters from the wanted one, summed in cell
/// order; or some number that isn't below `limit`.
double KVN_noisyMAX::Search::Distance(double limit) {
  const double* factors = cumulative.GetData();
  std::copy_n(factors + (gate.RowCount() - 1) * n, n, prefix.GetItems());
  int rows = 1;
  int start = 0;
  for (int i = 0; i + 1 < gate.BlockCount(); i++) {
    Expand(prefix.GetItems(), rows, n, factors, rowOf.GetItems() + start, gate.BlockSize(i));
    rows *= gate.BlockSize(i);
    start += gate.BlockSize(i);
  }
  const int lastCount = gate.BlockCount() == 0 ? 1 : gate.BlockSize(gate.BlockCount() - 1);
  const double* wanted = gate.cpt.GetData();
  double sum = 0.0;
  for (int row = 0; row < rows; row++) {
    const double* head = prefix.GetItems() + static_cast<std::ptrdiff_t>(row) * n;
    for (int k = 0; k < lastCount; k++, wanted += n) {
      if (gate.BlockCount() == 0) {
        std::copy_n(head, n, product.GetItems());
      } else {
        const double* factor = factors + static_cast<std::ptrdiff_t>(rowOf[start + k]) * n;
        for (int y = 0; y < n; y++) product[y] = head[y] * factor[y];
      }
      for (int y = 0; y < n; y++) {
        const double value = y == n - 1 ? product[y] : std::max(product[y] - product[y + 1], 0.0);
        const double difference = value - wanted[y];
        sum += difference * difference;
      }
    }
    if (sum >= limit) return sum;
  }
  return sum;
}

void KVN_noisyMAX::Search::Try(const Move& move, double& error, Move& best) {
  const int row = move.cell / n;
  std::copy_n(gate.Row(row), n, saved.GetItems());
  ApplyMove(gate.Row(row), n, move.cell % n, move.size);
  Cumulated(row);
  const double trial = Distance(error);
  std::copy_n(saved.GetItems(), n, gate.Row(row));
  Cumulated(row);
  if (trial < error) {
    error = trial;
    best = move;
  }
}

void KVN_noisyMAX::Search::Run() {
  double step = 1.0 / n;
  double error = 0.0;
  int moves = 0;
  do {
    error = Distance(std::numeric_limits<double>::infinity());
    Move best;
    for (int cell = 0; cell < gate.parameters.GetSize(); cell++) {
      if (unitColumns[cell / n] >= 0) continue;
      const double old = gate.parameters[cell];
      if (old + step <= 1) Try({cell, step}, error, best);
      if (old - step >= 0) Try({cell, -step}, error, best);
    }
    if (best.cell < 0) {
      step *= 0.5;
      continue;
    }
    ApplyMove(gate.Row(best.cell / n), n, best.cell % n, best.size);
    Cumulated(best.cell / n);
    moves++;
  } while (step > kLastStep && error > 0 && moves < kMostMoves);
}

/// The first guess: each row of a parent as the table has it with all other parents at their first
/// outcome, the leak as the table's last row.
int KVN_noisyMAX::SeedFromCpt() {
  const int n = cpt.GetSizeOfDimension(BlockCount());
  const int sizes[] = {BlockRows() + 1, n};
  if (int result = parameters.Setup(sizes, 2); result < 0) return result;
  for (int row = 0; row < RowCount(); row++) (void)SetConstrainedRow(row);  // in range by the loop
  for (int i = 0; i < BlockCount(); i++) {
    for (int j = 0; j < BlockSize(i) - 1; j++) {
      std::copy_n(cpt.GetData() + static_cast<std::ptrdiff_t>(j) * cpt.GetMultipliers()[i], n,
                  Row(BlockStart(i) + j));
    }
  }
  std::copy_n(cpt.GetData() + cpt.GetSize() - n, n, Row(RowCount() - 1));
  return 0;
}

int KVN_noisyMAX::FitParameters() {
  if (cpt.GetNumberOfDimensions() != BlockCount() + 1 ||
      cpt.GetSizeOfDimension(BlockCount()) != GetNumberOfOutcomes()) {
    return KVN_REFUSED;
  }
  for (int i = 0; i < BlockCount(); i++) {
    if (cpt.GetSizeOfDimension(i) != BlockSize(i)) return KVN_REFUSED;
  }
  if (int result = SeedFromCpt(); result < 0) return result;
  Search search(*this);
  if (int result = search.Prepare(); result < 0) return result;
  search.Run();
  MarkCptStale();
  return 0;
}
