package info.quenta.vorl.api;

import java.nio.file.Path;

/** Names of files for the native library. */
final class FileNames {
    private FileNames() {}

    /**
     * The name under which the library finds the file.
     *
     * @throws VorlException if it has characters that JNI doesn't carry over as they are
     */
    static String toNative(Path file) {
        String name = file.toString();
        if (name.chars().anyMatch(c -> Character.isSurrogate((char) c)))
            throw new VorlException(
                name + ": a file name without characters beyond U+FFFF is expected");
        // A plain hyphen would be the standard input.
        return name.equals("-") ? "./-" : name;
    }
}
