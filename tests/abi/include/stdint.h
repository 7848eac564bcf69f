/* For the baseline of the binary interface: the one type that the public header takes from here, and nothing that
   differs between C libraries. */
typedef int int32_t;
