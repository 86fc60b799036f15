"""What goes wrong, as exceptions; their text is one line, the program's own."""


class Error(Exception):
    """Anything that the effects, or the jobs on files, refuse or fail at."""


class UsageError(Error, ValueError):
    """What was asked for is wrong: an unknown effect or property, a value out of range, an array that is no picture."""


class InputError(Error):
    """A file that is to be read is missing, unreadable, or no media."""


class OutputError(Error):
    """A file that is to be written exists, or can't be written."""


class EffectError(Error):
    """The plug-in is missing, or an effect failed."""


class Cancelled(Error):
    """A job was given up."""
