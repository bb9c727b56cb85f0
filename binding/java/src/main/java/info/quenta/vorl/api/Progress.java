package info.quenta.vorl.api;

/**
 * How far a long call is.
 *
 * @param stage what is being done, in a word or two
 * @param level the level of the hierarchy that is being built, -1 where there is none
 * @param done how many items of the stage are done; of reading, how many bytes
 * @param total of how many, 0 where that isn't known
 */
public record Progress(String stage, int level, long done, long total) {}
