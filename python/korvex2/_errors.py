"""What the library answers where it could not do its work, as exceptions."""

from __future__ import annotations

import enum


class ErrorCode(enum.IntEnum):
    """Why the library failed: the VORERROR_... codes of C++ without that prefix."""

    UNDEFINED = -1
    OK = 0
    FAILED = 1
    NOT_IMPLEMENTED = 2
    FAILED_BUS_MASTER_CONNECTION = 3
    NOT_CONNECTED = 4
    INIT_FAILED = 5
    NOT_INTITIALIZED = 6
    INVALID_PARAMETER = 7
    INVALID_SETTINGS = 8
    INVALID_BUS_MANAGER = 9
    MEMORY_ALLOCATION_FAILED = 10
    LOW_LEVEL_FAILURE = 11
    NOT_FOUND = 12
    FAILED_GUID = 13
    INVALID_PACKET_SIZE = 14
    INVALID_MODE = 15
    NOT_IN_FORMAT7 = 16
    NOT_SUPPORTED = 17
    TIMEOUT = 18
    BUS_MASTER_FAILED = 19
    INVALID_GENERATION = 20
    LUT_FAILED = 21
    IIDC_FAILED = 22
    STROBE_FAILED = 23
    TRIGGER_FAILED = 24
    PROPERTY_FAILED = 25
    PROPERTY_NOT_PRESENT = 26
    REGISTER_FAILED = 27
    READ_REGISTER_FAILED = 28
    WRITE_REGISTER_FAILED = 29
    ISOCH_FAILED = 30
    ISOCH_ALREADY_STARTED = 31
    ISOCH_NOT_STARTED = 32
    ISOCH_START_FAILED = 33
    ISOCH_RETRIEVE_BUFFER_FAILED = 34
    ISOCH_STOP_FAILED = 35
    ISOCH_SYNC_FAILED = 36
    ISOCH_BANDWIDTH_EXCEEDED = 37
    IMAGE_CONVERSION_FAILED = 38
    IMAGE_LIBRARY_FAILURE = 39
    BUFFER_TOO_SMALL = 40
    IMAGE_CONSISTENCY_ERROR = 41
    INCOMPATIBLE_DRIVER = 42


class Error(Exception):
    """A conversion that the library refused, or knew that it would not make.

    `code` says why, `message` in a sentence. `cause` is the Error that led to this one, or the next of several
    reasons; None at the end. Causes show in the traceback as well.

    >>> import numpy as np, korvex2
    >>> try:
    ...     korvex2.convert(np.zeros((3, 3), np.uint8), to="bgr8", from_="raw8", tile="rggb")
    ... except korvex2.Error as error:
    ...     print(error.code.name, error.message, error.cause.message, sep="\\n")
    IMAGE_CONVERSION_FAILED
    A mosaic has an even number of rows; this one has 3.
    A mosaic has an even number of columns; this one has 3.
    """

    def __init__(self, code: int, message: str, cause: Error | None = None) -> None:
        super().__init__(code, message, cause)
        self.code = ErrorCode(code)
        self.message = message
        self.cause = cause
        self.__cause__ = cause

    def __str__(self) -> str:
        return f"{self.code.name}: {self.message}"


Error.__module__ = "korvex2"
