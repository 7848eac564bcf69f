! The spectrum of eight samples: two turns of a sine.
program ten_lines
  use, intrinsic :: iso_c_binding
  use xfm
  implicit none
  real(c_float) :: samples(8) = [0, 1, 0, -1, 0, 1, 0, -1], cells(10)
  integer :: k
  if (xfmgDFTFwd_RToCCS_32f(samples, cells, 8, xfmScaleNone) /= xfmStatusOk) error stop "no spectrum"
  do k = 0, 4
    print "('bin ', i0, ': ', f4.1, sp, f5.1, 'i')", k, cells(2 * k + 1), cells(2 * k + 2)
  end do
end program
