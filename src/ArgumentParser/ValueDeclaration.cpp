#include "ArgumentParser/ValueDeclaration.h"

namespace argparse {

ParsingStrategy toParsingStrategy(SingleValueParsingStrategy strategy) {
  switch (strategy) {
  case SingleValueParsingStrategy::next:
    return ParsingStrategy::nextAsValue;
  case SingleValueParsingStrategy::scanningForValue:
    return ParsingStrategy::scanningForValue;
  case SingleValueParsingStrategy::unconditional:
    return ParsingStrategy::unconditional;
  }
  return ParsingStrategy::nextAsValue;
}

ParsingStrategy toParsingStrategy(ArrayParsingStrategy strategy) {
  switch (strategy) {
  case ArrayParsingStrategy::singleValue:
    return ParsingStrategy::nextAsValue;
  case ArrayParsingStrategy::unconditionalSingleValue:
    return ParsingStrategy::unconditional;
  case ArrayParsingStrategy::upToNextOption:
    return ParsingStrategy::upToNextOption;
  case ArrayParsingStrategy::remaining:
    return ParsingStrategy::allRemainingInput;
  }
  return ParsingStrategy::nextAsValue;
}

ParsingStrategy toParsingStrategy(ArgumentArrayParsingStrategy strategy) {
  switch (strategy) {
  case ArgumentArrayParsingStrategy::remaining:
    return ParsingStrategy::nextAsValue;
  case ArgumentArrayParsingStrategy::unconditionalRemaining:
    return ParsingStrategy::allRemainingInput;
  }
  return ParsingStrategy::nextAsValue;
}

} // namespace argparse
