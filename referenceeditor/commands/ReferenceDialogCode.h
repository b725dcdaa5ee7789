#pragma once

// The outcome of a command flow's questions: go on, or stop with nothing done.
enum ReferenceDialogCode { DialogAccepted = 0, DialogCanceled = 1 };
