"""A pytest plug-in: everything that is tested goes through the backend, and how many calls it answered is told at the end."""

import scipy.fft

import xfm

calls = {"answered": 0, "handed back": 0}


class Counting:
    __ua_domain__ = xfm.__ua_domain__

    @staticmethod
    def __ua_function__(method, args, kwargs):
        result = xfm.__ua_function__(method, args, kwargs)
        calls["handed back" if result is NotImplemented else "answered"] += 1
        return result


def pytest_configure(config):
    scipy.fft.set_global_backend(Counting)
    scipy.fft.register_backend("scipy")  # what is handed back


def pytest_terminal_summary(terminalreporter):
    terminalreporter.write_line(f"Xfm answered {calls['answered']} calls, SciPy {calls['handed back']}")


def pytest_sessionfinish(session, exitstatus):
    if calls["answered"] < 100:
        session.exitstatus = 1
