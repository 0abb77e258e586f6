#pragma once

// Marks a user-visible English text made below the Qt layer, so that lupdate files it under the
// "Localizable" context; the Qt layer translates it when it shows it. Qt's own macro is the same.
#ifndef QT_TRANSLATE_NOOP
#define QT_TRANSLATE_NOOP(scope, x) x
#endif
