#ifndef KESTRUNECLI_ARGUMENTPARSER_ARGUMENTPARSER_H
#define KESTRUNECLI_ARGUMENTPARSER_ARGUMENTPARSER_H

// Everything a command declaration needs: the command model, the argument
// table rows, the error types and the entry points.
#include "ArgumentParser/ArgumentHelp.h"
#include "ArgumentParser/CommandType.h"
#include "ArgumentParser/Declarations.h"
#include "ArgumentParser/Errors.h"
#include "ArgumentParser/NameSpecification.h"
#include "ArgumentParser/ParsableCommand.h"
#include "ArgumentParser/Validation.h"

#endif
