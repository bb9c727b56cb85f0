// The native interface of the class info.quenta.vorl.vorlJNI and its Java proxies. Each file
// below declares one room of the library as Java sees it; the names of the native methods follow
// from the declarations.
%module vorl

%include "frame.i"
%include "numbers.i"
%include "flags.i"
%include "vectors.i"
%include "items.i"
%include "options.i"
%include "hierarchy.i"
%include "graph.i"
%include "processing.i"
%include "fileio.i"
