#!/usr/bin/env python3
"""Fails when a module includes a header of a module it may not use.

Dependencies point down only. Each row lists the modules whose headers a module may include
(beyond its own); tests and benchmarks are not checked.
"""
import pathlib
import re
import sys

QT_LIBRARIES = ["GaugewellUI/Support", "GaugewellUI/Model", "GaugewellUI/Notifications", "GaugewellUI/WidgetFeed",
                "GaugewellUI/Diagnostics", "GaugewellUI/Desktop", "GaugewellUI/Application"]
ALLOWED = {
    "UsageDomain": set(),
    # The JSON tree (settings file) and Expected are vocabulary types of the domain layer.
    "Platform": {"UsageDomain"},
    "ProviderKit": {"UsageDomain", "Platform"},
    "CodexProvider": {"ProviderKit", "UsageDomain", "Platform"},
    "ClaudeProvider": {"ProviderKit", "UsageDomain", "Platform"},
    "UsageCoordinator": {"UsageDomain", "ProviderKit/GaugewellProvider.h"},
    "UsagePresentation": {"UsageDomain", "ProviderKit", "Platform"},
    "GaugewellWidgetSupport": set(),
    # The Qt layer, by concern. Notifications, the widget feed and diagnostics stand on the model and never
    # reach the windows; the desktop session stands on nothing of the model.
    "GaugewellUI/Support": {"UsageDomain"},
    "GaugewellUI/Model": {"UsageDomain", "Platform", "ProviderKit", "UsageCoordinator", "UsagePresentation",
                          "GaugewellUI/Support"},
    "GaugewellUI/Notifications": {"UsageDomain", "Platform", "ProviderKit", "UsagePresentation",
                                  "GaugewellUI/Support", "GaugewellUI/Model"},
    "GaugewellUI/WidgetFeed": {"UsageDomain", "Platform", "ProviderKit", "UsagePresentation",
                               "GaugewellWidgetSupport", "GaugewellUI/Support", "GaugewellUI/Model"},
    "GaugewellUI/Diagnostics": {"UsageDomain", "Platform", "ProviderKit", "UsagePresentation",
                                "GaugewellUI/Support", "GaugewellUI/Model"},
    "GaugewellUI/Desktop": {"UsageDomain", "Platform", "GaugewellUI/Support"},
    "GaugewellUI/Application": {"UsageDomain", "Platform", "ProviderKit", "CodexProvider", "ClaudeProvider",
                                "UsageCoordinator", "UsagePresentation", "GaugewellWidgetSupport",
                                "GaugewellUI/Support", "GaugewellUI/Model", "GaugewellUI/Notifications",
                                "GaugewellUI/WidgetFeed"},
    "GaugewellUI/Views": {"UsageDomain", "Platform", "ProviderKit", "CodexProvider", "ClaudeProvider",
                          "UsageCoordinator", "UsagePresentation", "GaugewellWidgetSupport", *QT_LIBRARIES},
    "app": {"UsageDomain", "Platform", "ProviderKit", "CodexProvider", "ClaudeProvider", "UsageCoordinator",
            "UsagePresentation", "GaugewellWidgetSupport", *QT_LIBRARIES, "GaugewellUI/Views"},
}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"', re.MULTILINE)


def module_of(path: str):
    # Longest prefix first, so that GaugewellUI/Model wins over a bare GaugewellUI.
    for module in sorted(ALLOWED, key=len, reverse=True):
        if path == module or path.startswith(module + "/"):
            return module
    return None


def main() -> int:
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    problems = []
    for file in sorted(root.rglob("*")):
        if file.suffix not in {".h", ".cpp"} or "build" in file.relative_to(root).parts[:1]:
            continue
        relative = file.relative_to(root).as_posix()
        owner = module_of(relative)
        if owner is None:
            continue
        for included in INCLUDE.findall(file.read_text(errors="replace")):
            target = module_of(included)
            if target is None or target == owner:
                continue
            if target in ALLOWED[owner] or included in ALLOWED[owner]:
                continue
            problems.append(f"{relative}: {owner} may not include {included}")
    for problem in problems:
        print(problem)
    if problems:
        print(f"layering: {len(problems)} include(s) point the wrong way", file=sys.stderr)
        return 1
    print("layering: every module includes only what it may use")
    return 0


if __name__ == "__main__":
    sys.exit(main())
