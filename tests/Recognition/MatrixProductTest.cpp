#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

// What ggml calls in OpenBLAS's place, with the numbers that CBLAS gives its names.
extern "C" void velloro_openblas_set_num_threads(int count);
extern "C" void velloro_cblas_sgemm(int order, int transposeLeft, int transposeRight, int rows,
                                    int columns, int depth, float alpha, const float *left,
                                    int leftStride, const float *right, int rightStride, float beta,
                                    float *result, int stride);

namespace {

constexpr int rowMajor = 101;
constexpr int noTranspose = 111;
constexpr int transpose = 112;
constexpr float untouched = 1e9F;

struct Shape
{
    int rows;
    int columns;
    int depth;
    int threads;
};

class MatrixProduct : public testing::TestWithParam<Shape>
{};

TEST_P(MatrixProduct, isWhatTheSumOfProductsIs)
{
    const auto [rows, columns, depth, threads] = GetParam();
    const int stride = columns + 3; // What lies between the rows stays as it is.
    std::mt19937 random(7);
    std::uniform_real_distribution<float> number(-1, 1);
    std::vector<float> left(size_t(rows) * depth), right(size_t(columns) * depth);
    for (auto *matrix : {&left, &right}) {
        for (float &value : *matrix)
            value = number(random);
    }
    std::vector<float> result(size_t(rows) * stride, untouched);

    velloro_openblas_set_num_threads(threads);
    velloro_cblas_sgemm(rowMajor, noTranspose, transpose, rows, columns, depth, 1, left.data(), depth,
                        right.data(), depth, 0, result.data(), stride);

    double worst = 0;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < stride; ++column) {
            const double seen = result[size_t(row) * stride + column];
            double expected = column < columns ? 0 : untouched;
            for (int index = 0; column < columns && index < depth; ++index)
                expected += double{left[size_t(row) * depth + index]}
                    * right[size_t(column) * depth + index];
            worst = std::max(worst, std::abs(seen - expected));
        }
    }
    // A sum of `depth` products whose factors have an error of 2^-16.
    EXPECT_LT(worst, std::sqrt(depth) * 2e-5) << rows << "x" << columns << "x" << depth;
}

INSTANTIATE_TEST_SUITE_P(shapes, MatrixProduct,
                         testing::Values(Shape{1, 1, 1, 1}, Shape{32, 32, 32, 1},
                                         Shape{33, 31, 31, 1}, Shape{31, 65, 33, 2},
                                         Shape{150, 545, 100, 3}, Shape{260, 40, 1040, 4},
                                         Shape{3, 600, 513, 8}));

} // namespace
