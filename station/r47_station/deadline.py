"""The time limit of one command, over all of its waits."""

from __future__ import annotations

import time


class Deadline:
    """Begins to run when it is made."""

    def __init__(self, seconds: float) -> None:
        self._end = time.monotonic() + seconds

    def left(self) -> float:
        """Seconds that are left, 0 where there are none."""
        return max(0.0, self._end - time.monotonic())

    def over(self) -> bool:
        return self.left() == 0.0
