# The native module, which only the package calls.
from typing import Any

def __getattr__(name: str) -> Any: ...
