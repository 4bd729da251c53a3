# The reference of the C interface.
@INCLUDE               = docs/Doxyfile
INPUT                  = bindings/c/zorsuite.h
HTML_OUTPUT            = c
INPUT_FILTER           =
OPTIMIZE_OUTPUT_FOR_C  = YES
PREDEFINED             = ZOR_C_API= __cplusplus
