// The networks that Python gives.
#pragma once

#include "arrays.hpp"

#include <vorl/link_arrays.hpp>
#include <vorl/reading/network.hpp>

#include <optional>
#include <string>

namespace vorl::python {

/// A network in the form that a caller has it in, made when it is needed, without the interpreter.
class Input {
public:
    Input() = default;
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;
    virtual ~Input() = default;

    virtual UndirectedNetwork undirected() const = 0;
    virtual Network graph() const = 0;
    /// For messages.
    virtual std::string name() const = 0;
};

void defineNetworks(nb::module_& module);

}  // namespace vorl::python
