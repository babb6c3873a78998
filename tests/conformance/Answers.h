// What the calls of each test answered, for the table in the documentation.
#pragma once

namespace Conformance {

// Keeps what a call of the running test came to, beside what Windows answers: the result of a call
// that succeeds, the error of one that fails. Calls of the test's other threads come in no order
// and are not kept.
void NoteAnswer(long long windows, long long told);

// Keeps that the running test leaves out the rest, which has no answer on this system.
void NoteNoAnswer();

}  // namespace Conformance
