package info.quenta.vorl;

import static org.junit.jupiter.api.Assertions.assertEquals;
import static org.junit.jupiter.api.Assertions.assertNotEquals;
import static org.junit.jupiter.api.Assertions.assertTrue;

import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.attribute.PosixFilePermissions;
import java.util.ArrayList;
import java.util.List;
import java.util.Map;
import java.util.stream.Stream;
import org.junit.jupiter.api.Test;
import org.junit.jupiter.api.io.TempDir;

class NativeLibraryTest {
    @TempDir Path folder;

    /** Prints a value that comes from the library. */
    public static final class Probe {
        private Probe() {}

        public static void main(String[] args) {
            System.out.println("mask " + vorl.toMask(vorl.libBuild().getClustering()));
        }
    }

    private List<String> command(String... options) {
        List<String> command = new ArrayList<>(List.of(Settings.tool("java")));
        command.addAll(List.of(options));
        command.addAll(List.of(
            "-cp", Settings.path("jar") + ":" + Settings.path("classes"), Probe.class.getName()));
        return command;
    }

    private Settings.Outcome probe(Path cache, String... options) throws Exception {
        return Settings.run(folder, Map.of("XDG_CACHE_HOME", cache.toString()),
            command(options).toArray(String[] ::new));
    }

    private static List<Path> files(Path root) throws Exception {
        try (Stream<Path> all = Files.walk(root)) {
            return all.filter(Files::isRegularFile).toList();
        }
    }

    @Test
    void virtualMachinesThatStartAtOnceDoNotDisturbEachOther() throws Exception {
        Path cache = folder.resolve("cache");
        List<Process> processes = new ArrayList<>();
        List<Path> logs = new ArrayList<>();
        for (int i = 0; i < 4; ++i) {
            logs.add(folder.resolve("log" + i));
            processes.add(
                Settings.process(logs.get(i), Map.of("XDG_CACHE_HOME", cache.toString()), command())
                    .start());
        }
        for (int i = 0; i < 4; ++i)
            assertEquals("mask 227\n", Settings.outcome(processes.get(i), logs.get(i)).text());
        List<Path> unpacked = files(cache);
        assertEquals(1, unpacked.size(), unpacked.toString());
        assertEquals("rwx------",
            PosixFilePermissions.toString(
                Files.getPosixFilePermissions(unpacked.get(0).getParent())));
    }

    @Test
    void aDamagedCopyIsReplaced() throws Exception {
        Path cache = folder.resolve("cache");
        assertEquals(0, probe(cache).code());
        Path library = files(cache).get(0);
        long size = Files.size(library);
        Files.write(library, new byte[] {1, 2, 3});
        assertEquals("mask 227\n", probe(cache).text());
        assertEquals(size, Files.size(library));
    }

    @Test
    void propertiesNameTheLibrary() throws Exception {
        Path cache = folder.resolve("cache");
        Path library = Settings.path("library");
        assertEquals("mask 227\n", probe(cache, "-Dvorl.library.path=" + library).text());
        assertEquals(
            "mask 227\n", probe(cache, "-Djava.library.path=" + library.getParent()).text());
        assertTrue(Files.notExists(cache));
        Settings.Outcome missing = probe(cache, "-Dvorl.library.path=/nowhere/lib.so");
        assertNotEquals(0, missing.code());
        assertTrue(missing.text().contains("UnsatisfiedLinkError"), missing.text());
    }

    @Test
    void aHomeThatCannotBeWrittenToIsNoObstacle() throws Exception {
        Path file = Files.createFile(folder.resolve("file"));
        Path temporary = Files.createDirectory(folder.resolve("tmp"));
        assertEquals("mask 227\n", probe(file, "-Djava.io.tmpdir=" + temporary).text());
        assertEquals(List.of(), files(temporary));
    }
}
