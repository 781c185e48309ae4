// The benchmarks of carrying, to be registered by main(). Names are
// "what, operation/who"; each checks first that it carries the same content.

#ifndef VOK_BENCHMARKS_CARRYING_CARRIERS_H_
#define VOK_BENCHMARKS_CARRYING_CARRIERS_H_

namespace benchmarks {

// The library's messages.
void registerMessages();

// The same for results of other sizes.
void registerGrowth();

// Memory that parsing takes, for messages that are worse than others.
void registerUnusual();

// Others that carry the same content.
void registerMemory();
void registerProtozero();
void registerProtobufC();
void registerNanopb();
void registerJson();

}  // namespace benchmarks

#endif  // VOK_BENCHMARKS_CARRYING_CARRIERS_H_
