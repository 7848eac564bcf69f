! The Fortran module: dispatchers and kernels of every kind of argument, in place, states and statuses.
program fortran_test
  use, intrinsic :: iso_c_binding
  use xfm
  implicit none
  integer :: failures = 0

  call complex_there_and_back
  call layouts
  call walsh_hadamard
  call dct4
  call statuses
  if (failures > 0) error stop "the Fortran module fails"
  print "(a)", "the Fortran module works"

contains

  subroutine expect(holds, what)
    logical, intent(in) :: holds
    character(*), intent(in) :: what
    if (holds) return
    failures = failures + 1
    print "(2a)", "does not hold: ", what
  end subroutine

  subroutine complex_there_and_back
    complex(c_double_complex) :: x(15), y(15), z(15)
    integer :: n
    x = [(cmplx(cos(0.3d0 * n), sin(1.7d0 * n), c_double), n = 1, 15)]
    call expect(xfmgDFTFwd_CToC_64fc(x, y, 15, xfmScaleNone) == xfmStatusOk, "a dispatcher's status")
    call expect(abs(y(1) - sum(x)) < 1d-13, "bin 0 is the sum")
    call expect(xfmgDFTFwd_CToC_15_64fc(x, z, xfmScaleNone) == xfmStatusOk, "a kernel's status")
    call expect(all(y == z), "the kernel is what the dispatcher runs")
    call expect(xfmgDFTInv_CToC_64fc(y, y, 15, xfmScaleInvByN) == xfmStatusOk, "in place")
    call expect(maxval(abs(y - x)) < 1d-15, "there and back")
    call expect(xfmgDFTFwd_CToC_64fc(x, y, 15, xfmScaleFwdByN) == xfmStatusOk .and. abs(y(1) - sum(x) / 15) < 1d-14, "by N")
    call expect(xfmgDFTFwd_CToC_64fc(x, y, 15, xfmScaleBySqrtN) == xfmStatusOk .and. &
                abs(y(1) - sum(x) / sqrt(15d0)) < 1d-14, "by sqrt N")
  end subroutine

  subroutine layouts
    real(c_float) :: x(12), ccs(14), pack(12), perm(12), h(12)
    integer :: n
    x = [(real(modulo(7 * n, 12), c_float), n = 0, 11)]
    call expect(xfmgDFTFwd_RToCCS_32f(x, ccs, 12, xfmScaleNone) == xfmStatusOk, "CCS")
    call expect(xfmgDFTFwd_RToPack_12_32f(x, pack, xfmScaleNone) == xfmStatusOk, "Pack")
    call expect(xfmgDFTFwd_RToPerm_12_32f(x, perm, xfmScaleNone) == xfmStatusOk, "Perm")
    call expect(all(pack(2:) == ccs(3:13)) .and. pack(1) == ccs(1), "Pack is CCS without its zeros")
    call expect(perm(2) == ccs(13) .and. all(perm(3:) == ccs(3:12)), "Perm has the real bins first")
    call expect(xfmgHartley_32f(x, h, 12, xfmScaleNone) == xfmStatusOk, "Hartley")
    call expect(abs(h(2) - (ccs(3) - ccs(4))) < 1e-4, "a Hartley bin is R - I")
  end subroutine

  subroutine walsh_hadamard
    real(c_double), target :: x(256), y(256), buffer(1024)
    integer(c_int) :: bytes
    x = 0
    x(1) = 1
    call expect(xfmgWHTGetBufferSize_64f(8, bytes) == xfmStatusOk, "the buffer's size")
    call expect(bytes > 0 .and. bytes <= 8 * size(buffer), "the buffer's size is plausible")
    call expect(xfmgWHT_64f(x, y, 8, xfmScaleNone, c_loc(buffer)) == xfmStatusOk, "with a buffer")
    call expect(all(y == 1), "an impulse spreads to all")
    call expect(xfmgWHT_64f(y, y, 8, xfmScaleFwdByN, c_null_ptr) == xfmStatusOk, "without a buffer")
    call expect(all(y == x), "and back")
  end subroutine

  subroutine dct4
    real(c_float), target :: x(128), y(128)
    type(c_ptr) :: state
    integer :: n
    x = [(sin(0.1 * n), n = 1, 128)]
    call expect(xfmgDCT4InitAlloc_32f(state, 128) == xfmStatusOk, "a state")
    call expect(xfmgDCT4_32f(x, y, state) == xfmStatusOk, "the transform")
    call expect(xfmgDCT4_32f(y, y, state) == xfmStatusOk, "its inverse")
    call expect(maxval(abs(y / 64 - x)) < 1e-5, "there and back")
    call expect(xfmgDCT4Free_32f(state) == xfmStatusOk, "the end")
  end subroutine

  subroutine statuses
    complex(c_float_complex) :: x(2)
    type(XfmLibraryVersion), pointer :: version
    x = 1
    call expect(xfmgDFTFwd_CToC_32fc(x, x, 65, xfmScaleNone) == xfmStatusSizeError, "65 points are refused")
    call expect(xfmgDFTFwd_CToC_32fc(x, x, 2, 3) == xfmStatusFlagError, "two flags are refused")
    call expect(all(x == 1), "a refused call writes nothing")
    call expect(xfm_status_text(xfmStatusFlagError) == "not a scaling flag", "a status in words")
    call c_f_pointer(xfmgenGetLibVersion(), version)
    call expect(version%major == 6 .and. version%targetCpu(1) == "e", "the version record")
  end subroutine
end program
