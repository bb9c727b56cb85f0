// The last guard of the program against faults of its own.
#pragma once

namespace vorl::app {

/// Has a failed assertion of the library end the program with a message and the code of a fault,
/// and with nothing half-written.
void guardAssertions();

}  // namespace vorl::app
