// What ggml sees as the BLAS library: OpenBLAS, whose functions have a prefix in its package.
#pragma once

#include_next <cblas.h>

#define openblas_set_num_threads scipy_openblas_set_num_threads
#define cblas_sgemm scipy_cblas_sgemm
