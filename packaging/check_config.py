# SPDX-License-Identifier: MIT
"""Reads Buildroot's Config.in as its menus would, with and without each of the things that the package needs."""

import os
import sys
import tempfile

import kconfiglib

PACKAGE = "BR2_PACKAGE_VORNJSONDB"
NEEDED = ["BR2_INSTALL_LIBSTDCPP", "BR2_TOOLCHAIN_GCC_AT_LEAST_11", "BR2_TOOLCHAIN_USES_GLIBC"]
SELECTED = ["BR2_PACKAGE_JSONCPP", "BR2_PACKAGE_SQLITE"]
LIBRARIES = [PACKAGE + "_CONTRACT", PACKAGE + "_TABLE"]


def read(config_in):
    """The menu around Config.in: symbols that Buildroot defines elsewhere, then the file itself."""
    with tempfile.NamedTemporaryFile("w", suffix=".kconfig") as menu:
        for symbol in NEEDED + SELECTED:
            menu.write(f'config {symbol}\n\tbool "{symbol}"\n')
        menu.write(f'source "{os.path.abspath(config_in)}"\n')
        menu.flush()
        config = kconfiglib.Kconfig(menu.name, warn_to_stderr=False)
    if config.warnings:
        sys.exit("\n".join(config.warnings))
    undefined = [s.name for s in config.syms.values() if not s.nodes and s.name != "MODULES"]
    if undefined:
        sys.exit(f"symbols that nothing defines: {undefined}")
    return config


def selected(config, present, unwanted=()):
    """What is on when the package is wanted and only the symbols in present are given."""
    config.unset_values()
    for symbol in present:
        config.syms[symbol].set_value("y")
    for symbol in unwanted:
        config.syms[symbol].set_value("n")
    config.syms[PACKAGE].set_value("y")
    return {s.name for s in config.unique_defined_syms if s.str_value == "y"}


def main():
    config = read(sys.argv[1])
    comment = config.comments[0]
    if selected(config, NEEDED) != {PACKAGE, *NEEDED, *SELECTED, *LIBRARIES} or kconfiglib.expr_value(comment.dep) != 0:
        sys.exit("with everything there, the package is not on or does not select what it needs")
    if selected(config, NEEDED, unwanted=LIBRARIES) & set(LIBRARIES) != {LIBRARIES[0]}:
        sys.exit("it can be had without any library")
    for missing in NEEDED:
        present = [symbol for symbol in NEEDED if symbol != missing]
        if selected(config, present) != set(present) or kconfiglib.expr_value(comment.dep) != 2:
            sys.exit(f"the package can be had without {missing}, or no comment says why not")
    if not config.syms[PACKAGE].nodes[0].help:
        sys.exit("the package has no help text")


main()
