#pragma once
/// What the support library throws, as text.
#include <string>

#include "BaseTools/CBaseException.h"

namespace test {

/// Code and message of the exception that ends body, "nothing" when none does.
template <class Body>
std::string RaisedBy(Body body) {
    try {
        body();
    } catch (const CBaseException& e) {
        return std::to_string(e.GetCode()) + " " + e.GetMsg();
    }
    return "nothing";
}

} // namespace test
