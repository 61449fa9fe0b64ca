"""Typed records: meshes, lights, materials and everything else that a scene holds beside its nodes."""

from typing import Any, Dict, Iterator


class Record:
    """A record of a scene: its fields are attributes, called as in docs/format.md but in Python's spelling, such as
    `mesh.vertices.positions` or `mesh.skin.bone_indices`.

    Arrays are read-only views of the scene's memory: of vertices (n, 3), of triangles (n, 3), of weights and bone
    indices (vertices, influences), of matrices (n, 3, 4), of vertex frames (n, 2, 3): binormal and tangent. A column
    that a mesh does not have is None, as is an index that leads nowhere. Fields that change over time are Tracks, and
    records in a record are Records. A body that another program wrote in its own layout has its bytes as `body`.
    """

    def __init__(self, fields: Dict[str, Any]):
        self.__dict__.update(fields)

    def __getattr__(self, name: str) -> Any:
        raise AttributeError(f"there is no field {name!r} among {', '.join(self.__dict__)}")

    def __iter__(self) -> Iterator[str]:
        """The names of the fields."""
        return iter(self.__dict__)

    def __getitem__(self, name: str) -> Any:
        return self.__dict__[name]

    def __repr__(self) -> str:
        name = self.__dict__.get("name")
        return f"<tev2.Record {name!r}>" if name else f"<tev2.Record of {', '.join(self.__dict__)}>"
