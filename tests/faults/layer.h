#pragma once
/// What make_layer.py makes of failures.txt.
extern "C" {
extern const int kLayerFunctions;
extern const char* const kLayerNames[];
extern const char* const
    kLayerKinds[]; ///< how it fails: a letter of failures.txt, and '*' for all callers' calls
}
