// What the sweeps of a QR iteration work on: a Hessenberg matrix H, and the columns of Z, which
// wait for several sweeps. For the real and for the complex iteration.
#pragma once

#include "eigen/shared/balance.hpp"
#include "pack/memory.hpp"
#include "pack/numeric/batch.hpp"

namespace matrix_pack {

template <class View, class Sweep, class Transformation>
struct SweepWorkOf {
  // Full sweeps that Z may wait for.
  static constexpr Index kFullSweeps = 16;

  // Without Z, only the active block of H is kept up to date. False when there is no memory.
  bool open(int order, const View& hessenberg) {
    n = order;
    h = hessenberg;
    return reserve(n);
  }
  // Z takes part in rows low..high.
  bool open_with_vectors(const Balance& b, const View& hessenberg, const View& vectors) {
    n = b.n;
    h = hessenberg;
    has_z = true;
    z = vectors;
    z_begin = b.low;
    z_end = b.high + 1;
    return reserve(kFullSweeps * n);
  }

  // How far what is kept up to date reaches: upwards of the active block first..last, and to its
  // right.
  int first_row(int first) const { return has_z ? 0 : first; }
  int last_column(int last) const { return has_z ? n - 1 : last; }

  Array<Transformation> room;
  Batch<Sweep, Transformation> kept;
  int n = 0;
  View h = {};
  bool has_z = false;
  View z = {};
  int z_begin = 0;
  int z_end = 0;

  bool reserve(Index transformations) {
    room = new_array<Transformation>(transformations);
    kept.room = room.get();
    kept.capacity = transformations;
    return room != nullptr;
  }
};

}  // namespace matrix_pack
