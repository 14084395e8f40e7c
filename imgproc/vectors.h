// Whether row functions are written for vector instructions, which compilers make of simple loops, or for processors
// that have none. ORVA_NO_VECTORS forces the second form, so that it can be tested and counted on any machine.
#ifndef ORVA_FD_IMGPROC_VECTORS_H
#define ORVA_FD_IMGPROC_VECTORS_H

#if (defined(__SSE2__) || defined(__ARM_NEON)) && !defined(ORVA_NO_VECTORS)
#define ORVA_HAS_VECTORS 1
#else
#define ORVA_HAS_VECTORS 0
#endif

#endif
