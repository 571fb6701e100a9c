#pragma once

// A folder that the folder table does not name.
