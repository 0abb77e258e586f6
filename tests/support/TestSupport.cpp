// Anchors the TestSupport library; shared fixtures are mostly header-only.
