package info.quenta.vorl.api;

/** A fault that the library found: in the input, in the options, or in writing. */
public class VorlException extends RuntimeException {
    private static final long serialVersionUID = 1;

    VorlException(String message) { super(message); }

    VorlException(RuntimeException cause) {
        super(cause.getMessage() == null ? null : cause.getMessage().strip(), cause);
    }

    VorlException(String message, VorlException cause) { super(message, cause); }
}
