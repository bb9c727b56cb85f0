// The module that the package calls.
#include "clusterings.hpp"
#include "networks.hpp"
#include "views.hpp"

#include <vorl/reading/input_error.hpp>
#include <vorl/types/trace.hpp>

#include <nanobind/nanobind.h>

#include <exception>
#include <string>

namespace nb = nanobind;

namespace {

void raise(const char* kind, const vorl::InputError& err) {
    try {
        const nb::object type = nb::module_::import_("vorl._errors").attr(kind);
        const nb::object fault = type(err.what());
        const auto text = [](const std::string& value) {
            return nb::str(value.data(), value.size());
        };
        fault.attr("file") = text(err.file());
        fault.attr("line") = err.line() ? nb::object(nb::int_(err.line())) : nb::none();
        fault.attr("wrong") = text(err.wrong());
        fault.attr("found") = text(err.found());
        fault.attr("expected") = text(err.expected());
        PyErr_SetObject(type.ptr(), fault.ptr());
    } catch (nb::python_error& other) {
        other.restore();
    }
}

void translate(const std::exception_ptr& fault, void*) {
    try {
        std::rethrow_exception(fault);
    } catch (const vorl::MemoryLimitError& err) {
        raise("MemoryLimitError", err);
    } catch (const vorl::InputError& err) {
        raise("InputError", err);
    }
}

}  // namespace

NB_MODULE(_vorl, module) {
    vorl::ftrace = nullptr;
    module.attr("version") = VORL_VERSION;
    nb::register_exception_translator(translate);
    vorl::python::defineNetworks(module);
    vorl::python::defineClusterings(module);
    vorl::python::defineHierarchies(module);
    vorl::python::defineViews(module);
}
