import { mergeConfig } from "vite";
import { defineConfig } from "vitest/config";
import base from "./vite.config";

// The tests of the page in a browser, on a server of its own each: one after the other, since each is two programs' work.
export default mergeConfig(
    base,
    defineConfig({
        test: {
            include: ["tests/page/browser/**/*_test.ts"],
            watch: false,
            fileParallelism: false,
            testTimeout: 120_000,
            hookTimeout: 120_000,
            expect: { poll: { timeout: 60_000, interval: 200 } },
        },
    }),
);
