/* A twin that converts where its kernel does not.
   expects: twin-arithmetic xfmgDFTFwd_CToC_5_64fc narrow: 0, in the twin 1
   expects: twin-arithmetic xfmgDFTFwd_CToC_5_64fc widen: 0, in the twin 1
   expects: precision owngDFTFwd_CToC_5_64fc_unaligned a conversion in a body of one precision
*/
#include "pieces.inc"
#define TWIN_WORK vcvtpd2ps xmm2, xmm2; vcvtps2pd xmm2, xmm2
#include "single5.inc"
