"""Errors, and what a load has to say about a file."""

from typing import List, NamedTuple, Optional


class Finding(NamedTuple):
    """One thing that a load found wrong with a file.

    `str(finding)` is one line, the same that the command prints.
    """

    code: str
    """A name that never changes: "bad-magic", "record-overrun"."""
    severity: str
    """"error" (the load failed) or "warning"."""
    offset: int
    """The byte of the file."""
    chunk: Optional[int]
    """The kind of the chunk that contains it, or None outside every chunk."""
    chunk_offset: int
    """The first byte of that chunk."""
    path: str
    """The record, such as "matrixHierarchy.nodes[3].rotation"; may be empty."""
    expected: str
    found: str
    text: str
    """All of it on one line."""

    def __str__(self):
        return self.text


class Error(Exception):
    """Base of all errors of this package that are about files."""


class LoadError(Error):
    """A file that cannot be read, or that is not a sound scene file.

    >>> import tev2
    >>> try:
    ...     tev2.loads(b"not a scene")
    ... except tev2.LoadError as error:
    ...     print(error.code, "at byte", error.offset)
    bad-magic at byte 0
    """

    def __init__(self, message: str, file: str, reason: str, findings: List[Finding] = ()):
        super().__init__(message, file, reason, list(findings))
        self.file = file
        """The path, as given."""
        self.reason = reason
        """What is wrong, without the file."""
        self.findings = list(findings)
        """Everything that the load found, the error last; empty if the file could not be read."""

    def __str__(self):
        return self.args[0]

    @property
    def finding(self) -> Optional[Finding]:
        """The finding that made the load fail, or None if the file could not be read."""
        return next((finding for finding in self.findings if finding.severity == "error"), None)

    @property
    def code(self) -> Optional[str]:
        """The finding's code, or None."""
        return self.finding.code if self.finding else None

    @property
    def offset(self) -> Optional[int]:
        """The finding's byte in the file, or None."""
        return self.finding.offset if self.finding else None

    @property
    def path(self) -> Optional[str]:
        """The finding's record, or None."""
        return self.finding.path if self.finding else None


class SaveError(Error):
    """A scene that cannot be saved. An existing file is unchanged."""

    def __init__(self, message: str, file: str, reason: str):
        super().__init__(message, file, reason)
        self.file = file
        """The path, as given."""
        self.reason = reason
        """What is wrong, without the file."""

    def __str__(self):
        return self.args[0]


class CheckFinding(NamedTuple):
    """One thing that a check found: an error, a suspicious value or a note.

    `str(finding)` is one line, the same that `tv2 check` prints.
    """

    code: str
    """A name that never changes; check_codes() has them all."""
    severity: str
    """"error", "warning" or "note"."""
    offset: int
    """The byte of the file."""
    chunk: Optional[int]
    """The kind of the chunk that contains it, or None outside every chunk."""
    chunk_offset: int
    """The first byte of that chunk."""
    path: str
    """The record, such as "matrixHierarchy.nodes[3].rotation"; may be empty."""
    name: str
    """Of the node or object that the record is or belongs to; may be empty."""
    message: str
    """What is the matter, with the numbers."""
    text: str
    """All of it on one line."""

    def __str__(self):
        return self.text


class Conversion(NamedTuple):
    """One thing that a conversion could not bring over as it was.

    `str(entry)` is one line, the same that `tv2 convert` prints.
    """

    code: str
    """A name that never changes; `tv2 convert --codes` lists them."""
    severity: str
    """"lost", "assumed" or "changed"."""
    where: str
    """The record or place in the document; may be empty."""
    message: str
    """What happened there."""
    count: int
    """Of things, or of places."""
    text: str
    """All of it on one line."""

    def __str__(self):
        return self.text


class ConversionError(Error):
    """Scenes that cannot be converted, or only with losses that the caller does not accept."""

    def __init__(self, message: str, file: str, reason: str, report: List[Conversion] = ()):
        super().__init__(message, file, reason, list(report))
        self.file = file
        """The path, as given."""
        self.reason = reason
        """What is wrong, without the file."""
        self.report = list(report)
        """What would be lost or changed, as far as it is known."""

    def __str__(self):
        return self.args[0]
