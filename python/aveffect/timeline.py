"""Films from timelines in the editors' interchange format."""

from __future__ import annotations

from typing import Any, Optional

from ._jobs import Path, Progress, Result, Warn, _plain, run

__all__ = ["render"]


def render(film: Path, output: Path, *, progress: Optional[Progress] = None, warning: Optional[Warn] = None,
           **options: Any) -> Result:
    """Renders the film of an .otio file, as `aveffect timeline render` does; progress and warning as in aveffect.render."""
    return run(["timeline", "render"], [film, output], _plain(options), progress, warning)
