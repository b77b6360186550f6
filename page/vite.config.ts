import react from "@vitejs/plugin-react";
import { fileURLToPath } from "node:url";
import { defineConfig } from "vite";
import { licences } from "./licences";

export default defineConfig({
    // The server may hand the page out below any path.
    base: "./",
    plugins: [react(), licences()],
    resolve: { alias: { "@": fileURLToPath(new URL("src", import.meta.url)) } },
    build: {
        target: "es2022",
        // The server's content security policy allows files of its own only: nothing is inlined as data: addresses.
        assetsInlineLimit: 0,
        modulePreload: { polyfill: false },
        chunkSizeWarningLimit: 1000,
    },
});
