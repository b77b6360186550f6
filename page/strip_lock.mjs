// Takes addresses out of package-lock.json: who gives money to whom is nothing that an installation needs, and where
// packages come from is the machine's business.
import { readFileSync, writeFileSync } from "node:fs";

const file = new URL("package-lock.json", import.meta.url);
const lock = JSON.parse(readFileSync(file, "utf8"));
for (const entry of Object.values(lock.packages)) {
    delete entry.funding;
    delete entry.resolved;
}
writeFileSync(file, JSON.stringify(lock, null, 2) + "\n");
