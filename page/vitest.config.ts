import { mergeConfig } from "vite";
import { defineConfig } from "vitest/config";
import base from "./vite.config";

// The tests of the page's own logic; those in a browser have vitest.browser.config.ts.
export default mergeConfig(
    base,
    defineConfig({ test: { include: ["tests/page/unit/**/*_test.{ts,tsx}"], watch: false } }),
);
