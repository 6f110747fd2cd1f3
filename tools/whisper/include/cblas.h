// What ggml sees as the BLAS library: OpenBLAS, with MatrixProduct.cpp before it.
#pragma once

#include_next <cblas.h>

#ifdef __cplusplus
extern "C" {
#endif

void velloro_openblas_set_num_threads(int count);
void velloro_cblas_sgemm(CBLAS_ORDER order, CBLAS_TRANSPOSE transposeLeft,
                         CBLAS_TRANSPOSE transposeRight, blasint rows, blasint columns,
                         blasint depth, float alpha, const float *left, blasint leftStride,
                         const float *right, blasint rightStride, float beta, float *result,
                         blasint stride);

#ifdef __cplusplus
}
#endif

#define openblas_set_num_threads velloro_openblas_set_num_threads
#define cblas_sgemm velloro_cblas_sgemm
