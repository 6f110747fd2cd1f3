// Products of matrices for ggml's BLAS back end on processors with a matrix unit for bfloat16 (AMX).
//
// Each 32-bit factor is split into two bfloat16 numbers, which hold 16 of its 24 bits, and three of
// the four products of the halves are summed: more exact than 16-bit floats, and twice as fast as
// 32-bit vectors. What isn't of ggml's usual form goes on to OpenBLAS, as everything does on other
// processors.

#include <cblas.h>

#ifdef __AMX_BF16__ // Every processor that has it has 512-bit vectors and their bfloat16, too.

#include <algorithm>
#include <asm/prctl.h>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <future>
#include <immintrin.h>
#include <memory>
#include <sys/syscall.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int tileRows = 16;
constexpr int tileDepth = 32; // bfloat16 numbers in a row of a tile
constexpr int panel = 2 * tileRows; // rows and columns of the result that are computed at once
// What of the factors is split at a time: rows, columns and depth. It stays in the second cache.
constexpr int blockRows = 128;
constexpr int blockColumns = 512;
constexpr int blockDepth = 512;

struct alignas(64) Tile
{
    uint32_t pairs[tileRows][tileDepth / 2];
};

/// Two tiles, one below the other, of each half.
struct Step
{
    Tile high[2];
    Tile low[2];
};

struct Matrix
{
    const float *data;
    ptrdiff_t stride;
    int rows;
    int depth;
};

struct alignas(64) TileShapes
{
    uint8_t palette = 1;
    uint8_t startRow = 0;
    uint8_t reserved[14] = {};
    uint16_t rowBytes[16] = {64, 64, 64, 64, 64, 64, 64, 64};
    uint8_t rows[16] = {16, 16, 16, 16, 16, 16, 16, 16};
};

std::atomic<int> threadCount = 1;

/// The kernel lets a process use the unit's registers, which are large, only once it has asked.
bool mayUseTiles()
{
    constexpr int tileData = 18;
    static const bool granted = syscall(SYS_arch_prctl, ARCH_REQ_XCOMP_PERM, tileData) == 0;
    return granted;
}

/// The halves of 32 numbers, of which the first `count` are read and the others taken as 0.
struct Halves
{
    Halves(const float *numbers, int count)
    {
        const auto mask = count >= 32 ? ~uint32_t{0} : (uint32_t{1} << std::max(count, 0)) - 1;
        const __m512 first = _mm512_maskz_loadu_ps(static_cast<__mmask16>(mask), numbers);
        const __m512 second = _mm512_maskz_loadu_ps(static_cast<__mmask16>(mask >> 16), numbers + 16);
        high = reinterpret_cast<__m512i>(_mm512_cvtne2ps_pbh(second, first));
        low = reinterpret_cast<__m512i>(
            _mm512_cvtne2ps_pbh(_mm512_sub_ps(second, widen(_mm512_extracti64x4_epi64(high, 1))),
                                _mm512_sub_ps(first, widen(_mm512_castsi512_si256(high)))));
    }

    static __m512 widen(__m256i numbers)
    {
        return _mm512_castsi512_ps(_mm512_slli_epi32(_mm512_cvtepu16_epi32(numbers), 16));
    }

    __m512i high;
    __m512i low;
};

/// Splits up to 32 rows from `row` on, and of each up to `blockDepth` numbers from `start` on. Rows
/// stay rows.
void packRows(const Matrix &matrix, int row, int start, int depth, Step *steps)
{
    for (int offset = 0; offset < depth; offset += tileDepth, ++steps) {
        for (int index = 0; index < panel; ++index) {
            const bool isThere = row + index < matrix.rows;
            const Halves halves(matrix.data + (isThere ? (row + index) * matrix.stride : 0) + start
                                    + offset,
                                isThere ? depth - offset : 0);
            _mm512_store_si512(steps->high[index / tileRows].pairs[index % tileRows], halves.high);
            _mm512_store_si512(steps->low[index / tileRows].pairs[index % tileRows], halves.low);
        }
    }
}

/// The same, but rows become columns of pairs, as the unit wants the second factor.
void packColumns(const Matrix &matrix, int row, int start, int depth, Step *steps)
{
    const __m512i rowsOfTile = _mm512_mullo_epi32(
        _mm512_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15),
        _mm512_set1_epi32(tileDepth / 2));
    for (int offset = 0; offset < depth; offset += tileDepth, ++steps) {
        for (int index = 0; index < panel; ++index) {
            const bool isThere = row + index < matrix.rows;
            const Halves halves(matrix.data + (isThere ? (row + index) * matrix.stride : 0) + start
                                    + offset,
                                isThere ? depth - offset : 0);
            const int tile = index / tileRows;
            const int column = index % tileRows;
            _mm512_i32scatter_epi32(&steps->high[tile].pairs[0][column], rowsOfTile, halves.high, 4);
            _mm512_i32scatter_epi32(&steps->low[tile].pairs[0][column], rowsOfTile, halves.low, 4);
        }
    }
}

/// Adds to the 32 x 32 numbers of `result` (or sets them) the product of two panels.
void multiplyPanels(const Step *left, const Step *right, int steps, float *result, ptrdiff_t stride,
                    bool add)
{
    const auto bytes = static_cast<size_t>(stride) * sizeof(float);
    float *const below = result + tileRows * stride;
    if (add) {
        _tile_loadd(0, result, bytes);
        _tile_loadd(1, result + tileRows, bytes);
        _tile_loadd(2, below, bytes);
        _tile_loadd(3, below + tileRows, bytes);
    } else {
        _tile_zero(0);
        _tile_zero(1);
        _tile_zero(2);
        _tile_zero(3);
    }
    constexpr int rowBytes = tileDepth * 2;
    for (int step = 0; step < steps; ++step, ++left, ++right) {
        _tile_loadd(4, &left->low[0], rowBytes);
        _tile_loadd(6, &right->high[0], rowBytes);
        _tile_loadd(7, &right->high[1], rowBytes);
        _tile_dpbf16ps(0, 4, 6);
        _tile_loadd(5, &left->low[1], rowBytes);
        _tile_dpbf16ps(1, 4, 7);
        _tile_dpbf16ps(2, 5, 6);
        _tile_dpbf16ps(3, 5, 7);
        _tile_loadd(4, &left->high[0], rowBytes);
        _tile_loadd(5, &left->high[1], rowBytes);
        _tile_dpbf16ps(0, 4, 6);
        _tile_dpbf16ps(1, 4, 7);
        _tile_dpbf16ps(2, 5, 6);
        _tile_dpbf16ps(3, 5, 7);
        _tile_loadd(6, &right->low[0], rowBytes);
        _tile_loadd(7, &right->low[1], rowBytes);
        _tile_dpbf16ps(0, 4, 6);
        _tile_dpbf16ps(2, 5, 6);
        _tile_dpbf16ps(1, 4, 7);
        _tile_dpbf16ps(3, 5, 7);
    }
    _tile_stored(0, result, bytes);
    _tile_stored(1, result + tileRows, bytes);
    _tile_stored(2, below, bytes);
    _tile_stored(3, below + tileRows, bytes);
}

/// The same at the result's edge, where there is no room for a whole panel.
void multiplyEdge(const Step *left, const Step *right, int steps, float *result, ptrdiff_t stride,
                  int rows, int columns, bool add)
{
    alignas(64) float whole[panel][panel] = {};
    for (int row = 0; add && row < rows; ++row)
        std::copy_n(result + row * stride, columns, whole[row]);
    multiplyPanels(left, right, steps, whole[0], panel, add);
    for (int row = 0; row < rows; ++row)
        std::copy_n(whole[row], columns, result + row * stride);
}

/// result = left * transposed right, on the calling thread.
void multiply(const Matrix &left, const Matrix &right, float *result, ptrdiff_t stride)
{
    constexpr int stepsOfBlock = blockDepth / tileDepth;
    const auto leftSteps
        = std::make_unique_for_overwrite<Step[]>(blockRows / panel * stepsOfBlock);
    const auto rightSteps
        = std::make_unique_for_overwrite<Step[]>(blockColumns / panel * stepsOfBlock);
    const TileShapes shapes;
    _tile_loadconfig(&shapes);
    for (int start = 0; start < left.depth; start += blockDepth) {
        const int depth = std::min(blockDepth, left.depth - start);
        const int steps = (depth + tileDepth - 1) / tileDepth;
        for (int column = 0; column < right.rows; column += blockColumns) {
            const int lastColumn = std::min(column + blockColumns, right.rows);
            for (int at = column; at < lastColumn; at += panel)
                packColumns(right, at, start, depth, &rightSteps[(at - column) / panel * steps]);
            for (int row = 0; row < left.rows; row += blockRows) {
                const int lastRow = std::min(row + blockRows, left.rows);
                for (int at = row; at < lastRow; at += panel)
                    packRows(left, at, start, depth, &leftSteps[(at - row) / panel * steps]);
                for (int x = column; x < lastColumn; x += panel) {
                    for (int y = row; y < lastRow; y += panel) {
                        const Step *const a = &leftSteps[(y - row) / panel * steps];
                        const Step *const b = &rightSteps[(x - column) / panel * steps];
                        float *const to = result + y * stride + x;
                        if (y + panel <= left.rows && x + panel <= right.rows)
                            multiplyPanels(a, b, steps, to, stride, start > 0);
                        else
                            multiplyEdge(a, b, steps, to, stride, std::min(panel, left.rows - y),
                                         std::min(panel, right.rows - x), start > 0);
                    }
                }
            }
        }
    }
    _tile_release();
}

/// The same on all threads that ggml wants used.
void multiplyInParts(const Matrix &left, const Matrix &right, float *result, ptrdiff_t stride)
{
    const int panels = (left.rows + panel - 1) / panel;
    const int parts = std::min(threadCount.load(), panels);
    const auto part = [=](int index) {
        const int first = index * panels / parts * panel;
        const int last = std::min((index + 1) * panels / parts * panel, left.rows);
        multiply({left.data + first * left.stride, left.stride, last - first, left.depth}, right,
                 result + first * stride, stride);
    };
    std::vector<std::future<void>> others;
    for (int index = 1; index < parts; ++index)
        others.push_back(std::async(std::launch::async, part, index));
    part(0);
    for (std::future<void> &other : others)
        other.get();
}

} // namespace

#endif

extern "C" {

void velloro_openblas_set_num_threads(int count)
{
#ifdef __AMX_BF16__
    threadCount = std::max(count, 1);
#endif
    scipy_openblas_set_num_threads(count);
}

void velloro_cblas_sgemm(CBLAS_ORDER order, CBLAS_TRANSPOSE transposeLeft,
                         CBLAS_TRANSPOSE transposeRight, blasint rows, blasint columns,
                         blasint depth, float alpha, const float *left, blasint leftStride,
                         const float *right, blasint rightStride, float beta, float *result,
                         blasint stride)
{
#ifdef __AMX_BF16__
    const bool isUsual = order == CblasRowMajor && transposeLeft == CblasNoTrans
        && transposeRight == CblasTrans && alpha == 1 && beta == 0 && rows > 0 && columns > 0
        && depth > 0;
    if (isUsual && mayUseTiles()) {
        multiplyInParts({left, leftStride, rows, depth}, {right, rightStride, columns, depth},
                        result, stride);
        return;
    }
#endif
    scipy_cblas_sgemm(order, transposeLeft, transposeRight, rows, columns, depth, alpha, left,
                      leftStride, right, rightStride, beta, result, stride);
}

} // extern "C"
