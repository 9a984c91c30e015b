# SPDX-License-Identifier: MIT
"""Lists the faults that are planted in the emulated panel and must be found."""
from dataclasses import dataclass

from project import RETAINED_CELLS, WHOLE_AREAS, Project


@dataclass(frozen=True)
class PlantedFault:
    """`parameters` of guest_init plant it; a finding must match `message`, a regular expression."""

    text: str
    project: Project
    parameters: dict
    message: str


def _in_plain_module(name, project, message):
    return PlantedFault(name, project, {"PANEL_MODULE": "libplain_module.so", "PLANTED_FAULT": name}, message)


# The plain module's faults are those of tests/power_cut/planted_faults; all of them are tried with the disk states.
PLANTED_FAULTS = (
    PlantedFault('the command "sync" does nothing', RETAINED_CELLS, {"PANEL_BREAK_SYNC": 1},
                 r"^(LB|LW|RWI) \d+ came back as "),
    _in_plain_module("no sync for RWI", RETAINED_CELLS, r"^RWI \d+ came back as "),
    _in_plain_module("the watch list lacks RWI", RETAINED_CELLS, r"^RWI \d+ came back as 0, possible were \[[1-9]"),
    _in_plain_module("sync runs before the last area is saved", WHOLE_AREAS,
                     r"^sector \d+ of RWI is neither the last saved one"),
)
