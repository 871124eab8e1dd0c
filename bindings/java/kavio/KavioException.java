package kavio;

/** An operation failed. The message is for people, and null where there is nothing to say. */
public final class KavioException extends RuntimeException {
    /** How it ended; {@link #reason} is finer. */
    public final ResultType type;
    /** Why, for programs. */
    public final Cause reason;
    /** Whether what was asked for may have happened all the same. */
    public final Effect effect;

    KavioException(ResultType type, Cause reason, Effect effect, String message) {
        super(message);
        this.type = type;
        this.reason = reason;
        this.effect = effect;
    }

    @Override
    public String toString() {
        String text = getMessage() == null ? type.name() : getMessage();
        return text + " (cause " + reason + ", effect " + effect + ")";
    }
}
