"""The exported functions of the library on arrays, for tests and teaching."""


from ._core.library import *
