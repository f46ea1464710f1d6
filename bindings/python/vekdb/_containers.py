"""Container files that are written."""

import os
from typing import Iterable, Mapping, Optional, Tuple, Union

from . import _core


def write_container(
    path: Union[str, bytes, "os.PathLike[str]"],
    items: Iterable[Tuple[str, Mapping[str, str]]],
    *,
    name: str,
    columns: Iterable[str] = (),
    attributes: Optional[Mapping[str, str]] = None,
    permanent: bool = False,
) -> None:
    """Writes a container file, whole or not at all.

    Items are pairs of an identity (38 hexadecimal digits) and attributes; columns names the
    attributes that items may have.
    """
    own = ["Cookie", *columns]
    pairs = [(identity, dict(cells)) for identity, cells in items]
    _core._write_container(path, own, pairs, dict(attributes or {}), name, permanent)
