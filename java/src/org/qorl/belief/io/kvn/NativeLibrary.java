package org.qorl.belief.io.kvn;

import java.io.IOException;
import java.io.InputStream;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.StandardCopyOption;
import java.util.ArrayList;
import java.util.List;
import java.util.Locale;

/** Finds and loads the engine's shared library. */
final class NativeLibrary {
    /** Path of the library file, or of the folder that holds it. */
    static final String PROPERTY = "callormel.library";

    private static final String NAME = "callormel";

    private NativeLibrary() {}

    /**
     * Loads the library from the first place that has it: the system property, the folders of
     * java.library.path, the jar that this class came from.
     *
     * @throws UnsatisfiedLinkError with all places and what was wrong with each
     */
    static void load() {
        List<String> tried = new ArrayList<>();
        if (loadFromProperty(tried) || loadFromLibraryPath(tried) || loadFromJar(tried)) {
            return;
        }
        throw new UnsatisfiedLinkError("The native library " + NAME + " can't be loaded. Tried:\n  "
                + String.join("\n  ", tried));
    }

    private static boolean loadFromProperty(List<String> tried) {
        String property = System.getProperty(PROPERTY);
        if (property == null || property.isEmpty()) {
            tried.add("system property " + PROPERTY + ": not set");
            return false;
        }
        Path file = Path.of(property).toAbsolutePath();
        if (Files.isDirectory(file)) {
            file = file.resolve(System.mapLibraryName(NAME));
        }
        try {
            System.load(file.toString());
            return true;
        } catch (UnsatisfiedLinkError error) {
            tried.add("system property " + PROPERTY + " (" + file + "): " + error.getMessage());
            return false;
        }
    }

    private static boolean loadFromLibraryPath(List<String> tried) {
        try {
            System.loadLibrary(NAME);
            return true;
        } catch (UnsatisfiedLinkError error) {
            tried.add("java.library.path (" + System.getProperty("java.library.path") + "): "
                    + error.getMessage());
            return false;
        }
    }

    /** The system can only load files, so the library is copied out of the jar first. */
    private static boolean loadFromJar(List<String> tried) {
        String resource = "/native/" + platform() + "/" + System.mapLibraryName(NAME);
        try (InputStream packed = NativeLibrary.class.getResourceAsStream(resource)) {
            if (packed == null) {
                tried.add("jar: no resource " + resource);
                return false;
            }
            Path copy = Files.createTempFile(NAME, System.mapLibraryName(""));
            try {
                Files.copy(packed, copy, StandardCopyOption.REPLACE_EXISTING);
                System.load(copy.toString());
            } finally {
                discard(copy);
            }
            return true;
        } catch (IOException | UnsatisfiedLinkError error) {
            tried.add("jar, resource " + resource + ": " + error.getMessage());
            return false;
        }
    }

    /** A loaded file may go at once on systems that keep it while it is mapped. */
    private static void discard(Path copy) {
        try {
            Files.deleteIfExists(copy);
        } catch (IOException inUse) {
            copy.toFile().deleteOnExit();
        }
    }

    /** Operating system and processor as in the names of the jar's folders: linux-amd64. */
    static String platform() {
        String system = System.getProperty("os.name").toLowerCase(Locale.ROOT);
        String processor = System.getProperty("os.arch").toLowerCase(Locale.ROOT);
        String shortName = system.startsWith("windows") ? "windows"
                : system.startsWith("mac") ? "macos" : system.replace(' ', '_');
        return shortName + "-" + (processor.equals("x86_64") ? "amd64" : processor);
    }
}
