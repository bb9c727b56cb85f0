package info.quenta.vorl;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.List;
import java.util.Map;
import java.util.concurrent.TimeUnit;

/** Where the tests find what they work on, and the start of other processes. */
public final class Settings {
    private Settings() {}

    /** What a process printed, standard error included, and its exit code. */
    public record Outcome(int code, String text) {}

    public static Path path(String name) {
        return Path.of(System.getProperty("vorl.test." + name));
    }

    public static Path data(String name) { return path("data").resolve(name); }

    public static String tool(String name) {
        return Path.of(System.getProperty("java.home"), "bin", name).toString();
    }

    public static ProcessBuilder process(
        Path log, Map<String, String> environment, List<String> command) {
        ProcessBuilder builder =
            new ProcessBuilder(command).redirectErrorStream(true).redirectOutput(log.toFile());
        builder.environment().putAll(environment);
        return builder;
    }

    public static Outcome outcome(Process process, Path log)
        throws IOException, InterruptedException {
        if (!process.waitFor(120, TimeUnit.SECONDS)) {
            process.destroyForcibly();
            throw new IOException("the process doesn't end");
        }
        return new Outcome(
            process.exitValue(), new String(Files.readAllBytes(log), StandardCharsets.UTF_8));
    }

    public static Outcome run(Path folder, Map<String, String> environment, String... command)
        throws IOException, InterruptedException {
        Path log = Files.createTempFile(folder, "run", ".log");
        return outcome(process(log, environment, List.of(command)).start(), log);
    }
}
